#include "link/conexion_tcp.h"

#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <mutex>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "link/espera_sitio.h"
#include "link/vaciado.h"
#include "platform/descriptor.h"
#include "platform/motivos.h"

namespace telvane {

namespace {

using Cronometro = std::chrono::steady_clock;

// A dead peer is given up after some 15 s, whether bytes are under way or it is asked whether it is there.
constexpr int kSilencioAntesDePreguntar = 10;
constexpr int kEntrePreguntas = 5;
constexpr int kPreguntas = 3;
constexpr int kPlazoSinAcuse = 15'000;

struct Fallo {
    MotivoPuerto motivo;
    std::string que;
};

Fallo cortada(const DireccionTcp& direccion) {
    return {MotivoPuerto::desaparecido,
            fmt::format("se cortó la conexión con {}: revise la red y el servidor "
                        "de puertos",
                        direccion.texto())};
}

Fallo falloDeRed(const DireccionTcp& direccion, int numero) {
    const auto nombre = direccion.texto();
    switch (numero) {
        case ECONNREFUSED:
            return {MotivoPuerto::noExiste, fmt::format("{} rechaza la conexión: revise que el servidor de "
                                                        "puertos esté en marcha y el número de puerto",
                                                        nombre)};
        case ECONNRESET:
        case ECONNABORTED:
        case EPIPE:
            return cortada(direccion);
        case ETIMEDOUT:
            return {MotivoPuerto::noExiste,
                    fmt::format("{} no contesta: revise la dirección, la red y el cortafuegos", nombre)};
        case ENETUNREACH:
        case EHOSTUNREACH:
            return {MotivoPuerto::noExiste,
                    fmt::format("no hay camino de red hasta {}: revise la conexión de este equipo", nombre)};
        default:
            return {MotivoPuerto::noSeAbre,
                    fmt::format("no se pudo conectar con {}: {}", nombre, motivoSistema(numero))};
    }
}

void ponerOpcion(int descriptor, int nivel, int opcion, int valor) {
    // Each may be refused by an unusual network; what follows does without.
    static_cast<void>(::setsockopt(descriptor, nivel, opcion, &valor, sizeof valor));
}

// A server with Nagle's algorithm sends the rest of a block only once its beginning has been acknowledged,
// and the system keeps acknowledgements back for 40 ms in a conversation; it forgets this wish again and
// again.
void acusarEnseguida(int descriptor) {
    ponerOpcion(descriptor, IPPROTO_TCP, TCP_QUICKACK, 1);
}

void preparar(int descriptor) {
    ponerOpcion(descriptor, IPPROTO_TCP, TCP_NODELAY, 1);
    ponerOpcion(descriptor, SOL_SOCKET, SO_KEEPALIVE, 1);
    ponerOpcion(descriptor, IPPROTO_TCP, TCP_KEEPIDLE, kSilencioAntesDePreguntar);
    ponerOpcion(descriptor, IPPROTO_TCP, TCP_KEEPINTVL, kEntrePreguntas);
    ponerOpcion(descriptor, IPPROTO_TCP, TCP_KEEPCNT, kPreguntas);
    ponerOpcion(descriptor, IPPROTO_TCP, TCP_USER_TIMEOUT, kPlazoSinAcuse);
}

// 0, or the reason.
int conectar(int descriptor, const addrinfo& destino, Cronometro::time_point final) {
    if (::connect(descriptor, destino.ai_addr, destino.ai_addrlen) == 0) return 0;
    if (errno != EINPROGRESS) return errno;
    if (!esperarSitio(descriptor, final)) return ETIMEDOUT;
    int error = 0;
    socklen_t largo = sizeof error;
    if (::getsockopt(descriptor, SOL_SOCKET, SO_ERROR, &error, &largo) != 0) return errno;
    return error;
}

using Direcciones = std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)>;

// One address after the other; one that is silent leaves time for those behind it.
Descriptor conectarConAlguna(const Direcciones& direcciones, int& error) {
    const auto final = Cronometro::now() + ConexionTcp::kPlazo;
    int quedan = 0;
    for (const auto* d = direcciones.get(); d; d = d->ai_next) ++quedan;
    for (const auto* d = direcciones.get(); d; d = d->ai_next, --quedan) {
        Descriptor descriptor(
            ::socket(d->ai_family, d->ai_socktype | SOCK_NONBLOCK | SOCK_CLOEXEC, d->ai_protocol));
        if (descriptor() < 0) {
            error = errno;
            continue;
        }
        preparar(descriptor());
        const auto ahora = Cronometro::now();
        error = conectar(descriptor(), *d, ahora + (final - ahora) / quedan);
        if (error == 0) return descriptor;
    }
    return Descriptor();
}

}  // namespace

struct ConexionTcp::Intento {
    explicit Intento(DireccionTcp adonde)
        : direccion(std::move(adonde)), aviso(::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {}

    void correr();
    void terminar(Descriptor conectado, std::optional<Fallo> porque);

    const DireccionTcp direccion;
    const Descriptor aviso;

    std::mutex cerrojo;  // for what follows
    bool decidido = false;
    std::optional<Fallo> fallo;
    Descriptor socket;
    std::vector<std::uint8_t> pendientes;  // written before there was a connection
};

void ConexionTcp::Intento::correr() {
    addrinfo pedido{};
    pedido.ai_socktype = SOCK_STREAM;
    pedido.ai_flags = AI_ADDRCONFIG | AI_NUMERICSERV;
    addrinfo* primera = nullptr;
    const int error = ::getaddrinfo(direccion.maquina.c_str(), direccion.puerto.c_str(), &pedido, &primera);
    if (error != 0) {
        terminar(Descriptor(), Fallo{MotivoPuerto::noExiste,
                                     fmt::format("no se encuentra la máquina {}: revise el nombre y la red",
                                                 direccion.maquina)});
        return;
    }
    const Direcciones direcciones(primera, &::freeaddrinfo);
    int numero = EHOSTUNREACH;
    auto conectado = conectarConAlguna(direcciones, numero);
    std::optional<Fallo> porque;
    if (conectado() < 0) porque = falloDeRed(direccion, numero);
    terminar(std::move(conectado), std::move(porque));
}

void ConexionTcp::Intento::terminar(Descriptor conectado, std::optional<Fallo> porque) {
    const std::lock_guard guardia(cerrojo);
    socket = std::move(conectado);
    fallo = std::move(porque);
    // A fresh socket has room for the few bytes of an exchange's beginning.
    if (socket() >= 0 && !pendientes.empty() &&
        ::send(socket(), pendientes.data(), pendientes.size(), MSG_NOSIGNAL) !=
            static_cast<ssize_t>(pendientes.size())) {
        fallo = falloDeRed(direccion, errno);
    }
    pendientes.clear();
    decidido = true;
    static_cast<void>(::eventfd_write(aviso(), 1));
}

ConexionTcp::ConexionTcp(const DireccionTcp& direccion)
    : direccion_(direccion), intento_(std::make_shared<Intento>(direccion)) {
    if (intento_->aviso() < 0) {
        throw ErrorPuerto(MotivoPuerto::noSeAbre, fmt::format("no se pudo conectar con {}: {}",
                                                              direccion.texto(), motivoSistema(errno)));
    }
    // The program's signals are for the thread of its loop.
    sigset_t todas;
    sigset_t anteriores;
    ::sigfillset(&todas);
    ::pthread_sigmask(SIG_SETMASK, &todas, &anteriores);
    try {
        std::thread([intento = intento_] { intento->correr(); }).detach();
    } catch (const std::system_error& error) {
        ::pthread_sigmask(SIG_SETMASK, &anteriores, nullptr);
        throw ErrorPuerto(MotivoPuerto::noSeAbre,
                          fmt::format("no se pudo conectar con {}: {}", direccion.texto(), motivoDe(error)));
    }
    ::pthread_sigmask(SIG_SETMASK, &anteriores, nullptr);
}

// The thread may still hold its part: the socket closes with the last of us.
ConexionTcp::~ConexionTcp() = default;

bool ConexionTcp::decidida() const {
    const std::lock_guard guardia(intento_->cerrojo);
    return intento_->decidido;
}

int ConexionTcp::aviso() const {
    return intento_->aviso();
}

int ConexionTcp::socket() const {
    const std::lock_guard guardia(intento_->cerrojo);
    return intento_->socket();
}

void ConexionTcp::exigir() const {
    const std::lock_guard guardia(intento_->cerrojo);
    if (intento_->fallo) throw ErrorPuerto(intento_->fallo->motivo, intento_->fallo->que);
}

void ConexionTcp::desaparecio() const {
    const auto fallo = cortada(direccion_);
    throw ErrorPuerto(fallo.motivo, fallo.que);
}

void ConexionTcp::escribir(std::span<const std::uint8_t> bytes) {
    exigir();
    {
        const std::lock_guard guardia(intento_->cerrojo);
        if (!intento_->decidido) {
            intento_->pendientes.insert(intento_->pendientes.end(), bytes.begin(), bytes.end());
            return;
        }
    }
    const auto final = Cronometro::now() + kPlazoEscritura;
    while (!bytes.empty()) {
        const auto n = ::send(socket(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (n >= 0) {
            acusarEnseguida(socket());
            bytes = bytes.subspan(static_cast<std::size_t>(n));
        } else if (errno == EAGAIN) {
            if (!esperarSitio(socket(), final)) {
                throw ErrorPuerto(
                    MotivoPuerto::otro,
                    fmt::format("{} no acepta más datos: revise la red y el servidor de puertos",
                                direccion_.texto()));
            }
        } else if (errno != EINTR) {
            desaparecio();
        }
    }
}

std::size_t ConexionTcp::leer(std::span<std::uint8_t> destino) {
    exigir();
    const int descriptor = socket();
    if (destino.empty() || descriptor < 0) return 0;
    while (true) {
        const auto n = ::recv(descriptor, destino.data(), destino.size(), 0);
        if (n > 0) {
            acusarEnseguida(descriptor);
            return static_cast<std::size_t>(n);
        }
        if (n < 0 && errno == EINTR) continue;
        if (n < 0 && errno == EAGAIN) return 0;
        desaparecio();
    }
}

void ConexionTcp::vaciar() {
    const std::lock_guard guardia(intento_->cerrojo);
    if (intento_->socket() >= 0) telvane::vaciar(intento_->socket());
}

bool ConexionTcp::sirve() {
    const std::lock_guard guardia(intento_->cerrojo);
    if (!intento_->decidido) return true;
    if (intento_->fallo) return false;
    std::uint8_t byte = 0;
    const auto n = ::recv(intento_->socket(), &byte, 1, MSG_PEEK);
    return n > 0 || (n < 0 && (errno == EAGAIN || errno == EINTR));
}

void ConexionTcp::umbral(int bytes) {
    umbral_ = bytes;
    if (const int descriptor = socket(); descriptor >= 0)
        ponerOpcion(descriptor, SOL_SOCKET, SO_RCVLOWAT, umbral_);
}

}  // namespace telvane
