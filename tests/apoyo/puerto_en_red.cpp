#include "tests/apoyo/puerto_en_red.h"

// Of the two headers that tell of TCP the one that knows how many bytes a connection has carried.
#include <arpa/inet.h>
#include <linux/tcp.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <deque>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "link/protocolo.h"
#include "platform/descriptor.h"

namespace telvane {

namespace {

[[noreturn]] void fallar(const char* que) {
    throw std::system_error(errno, std::generic_category(), que);
}

// An address of this machine that no other process of the tests takes: a port that is given up for a while is
// there again.
sockaddr_in maquinaPropia() {
    constexpr std::uint32_t kRedDePruebas = 0x7F400000;  // 127.64.0.0
    sockaddr_in donde{};
    donde.sin_family = AF_INET;
    donde.sin_addr.s_addr = htonl(kRedDePruebas | (static_cast<std::uint32_t>(::getpid()) & 0x3FFFFF));
    return donde;
}

enum class Lado { propio, ajeno };

// Nothing where the descriptor is no connection.
std::optional<sockaddr_in> extremo(int descriptor, Lado lado) {
    sockaddr_in donde{};
    socklen_t largo = sizeof donde;
    auto* generica = reinterpret_cast<sockaddr*>(&donde);
    const int resultado = lado == Lado::propio ? ::getsockname(descriptor, generica, &largo)
                                               : ::getpeername(descriptor, generica, &largo);
    if (resultado != 0 || donde.sin_family != AF_INET) return std::nullopt;
    return donde;
}

bool iguales(const std::optional<sockaddr_in>& una, const sockaddr_in& otra) {
    return una && una->sin_addr.s_addr == otra.sin_addr.s_addr && una->sin_port == otra.sin_port;
}

std::uint64_t bytesEscritos(const tcp_info& estado) {
    return estado.tcpi_bytes_sent - estado.tcpi_bytes_retrans + estado.tcpi_notsent_bytes;
}

void ponerOpcion(int descriptor, int nivel, int opcion, int valor) {
    if (::setsockopt(descriptor, nivel, opcion, &valor, sizeof valor) != 0) fallar("setsockopt");
}

// Where the machine has other work, what travels waits for a thread of the kernel's, which gets its turn
// sooner where nobody asks in a circle.
void descansar() {
    std::this_thread::sleep_for(std::chrono::microseconds(1));
}

bool unida(const tcp_info& estado) {
    constexpr std::uint8_t kEstablecida = 1;  // the kernel's number
    return estado.tcpi_state == kEstablecida;
}

}  // namespace

// The connection that the server has: its own end, and the PC's descriptor, which tells what is on its way.
struct PuertoEnRed::Cliente {
    Descriptor propio;
    int delPc = -1;
    sockaddr_in direccionDelPc{};
    std::uint64_t tomados = 0;
    std::uint64_t dados = 0;
    std::deque<std::uint8_t> porDar;
    std::size_t porSegmento = 1;
    std::unique_ptr<PuertoSerie> dispositivo;
    bool seVa = false;  // once everything was given
    bool conCorte = false;

    // Nothing once the PC has closed its end, although the descriptor's number may be another's by now.
    std::optional<tcp_info> otroLado() const {
        tcp_info estado{};
        socklen_t largo = sizeof estado;
        if (!iguales(extremo(delPc, Lado::propio), direccionDelPc)) return std::nullopt;
        if (::getsockopt(delPc, IPPROTO_TCP, TCP_INFO, &estado, &largo) != 0) return std::nullopt;
        return estado;
    }
    // What travels arrives within microseconds; the clock of the test stands still for it.
    template <class Condicion>
    void esperarA(const Condicion& llego) const {
        for (auto otro = otroLado(); otro && unida(*otro) && !llego(*otro); otro = otroLado()) descansar();
    }
};

// An opening of the PC's.
class PuertoEnRed::Abierto final : public PuertoSerie {
   public:
    Abierto(PuertoEnRed& red, std::function<void()> alDespertar)
        : red_(red), puerto_(red.bucle_, red.conexiones_, red.direccion_, std::move(alDespertar)) {
        red_.abierto_ = this;
    }
    Abierto(const Abierto&) = delete;
    Abierto& operator=(const Abierto&) = delete;
    // What was asked for is decided when it is closed: nothing is left to a thread.
    ~Abierto() override {
        esperarDecision();
        red_.abierto_ = nullptr;
    }

    void esperarDecision() const {
        while (!puerto_.listo()) descansar();
    }
    bool listo() const override { return puerto_.listo(); }
    void escribir(std::span<const std::uint8_t> bytes) override { puerto_.escribir(bytes); }
    std::size_t leer(std::span<std::uint8_t> destino) override { return puerto_.leer(destino); }
    void umbral(int bytes) override { puerto_.umbral(bytes); }
    void vaciarEntrada() override { puerto_.vaciarEntrada(); }
    void dtr(bool alto) override { puerto_.dtr(alto); }
    void rts(bool alto) override { puerto_.rts(alto); }
    void romper(bool encendido) override { puerto_.romper(encendido); }
    std::vector<int> sucesosDeLinea() override { return puerto_.sucesosDeLinea(); }
    void vigilarLinea(bool si) override { puerto_.vigilarLinea(si); }

   private:
    PuertoEnRed& red_;
    PuertoTcp puerto_;
};

PuertoEnRed::PuertoEnRed(BuclePrueba& bucle, PuertosSimulados& dispositivos, int numero, Trato trato)
    : bucle_(bucle), dispositivos_(dispositivos), numero_(numero), trato_(trato), conexiones_(bucle) {
    escuchar(true);
    bucle_.rodear(this);
}

PuertoEnRed::~PuertoEnRed() {
    bucle_.rodear(nullptr);
}

void PuertoEnRed::escuchar(bool si) {
    if (si == (escucha_() >= 0)) return;
    escucha_ = Descriptor();
    if (!si) return;
    auto donde = maquinaPropia();
    if (!direccion_.puerto.empty())
        donde.sin_port = htons(static_cast<in_port_t>(std::stoi(direccion_.puerto)));
    escucha_ = Descriptor(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    ponerOpcion(escucha_(), SOL_SOCKET, SO_REUSEADDR, 1);
    if (::bind(escucha_(), reinterpret_cast<const sockaddr*>(&donde), sizeof donde) != 0) fallar("bind");
    if (::listen(escucha_(), 4) != 0) fallar("listen");
    const auto aqui = extremo(escucha_(), Lado::propio).value();
    std::array<char, INET_ADDRSTRLEN> texto{};
    ::inet_ntop(AF_INET, &aqui.sin_addr, texto.data(), texto.size());
    direccion_ = {texto.data(), std::to_string(ntohs(aqui.sin_port))};
}

std::unique_ptr<PuertoSerie> PuertoEnRed::abrir(int numero, const AjustesLinea&,
                                                std::function<void()> alDespertar) {
    if (!existe(numero)) throw ErrorPuerto(MotivoPuerto::noExiste, "el puerto no existe");
    if (abierto_) throw ErrorPuerto(MotivoPuerto::ocupado, "el puerto está ocupado");
    escuchar(trato_ == Trato::junta || dispositivos_.existe(numero_));
    quizasNueva_ = true;
    return std::make_unique<Abierto>(*this, std::move(alDespertar));
}

bool PuertoEnRed::alDia() {
    if (quizasNueva_) aceptar();
    if (!cliente_) return false;
    leerDispositivo();
    tomar();
    if (!cliente_) return false;
    leerDispositivo();
    return dar();
}

// The opening used the connection that there is, or made one, which then waits to be taken; or was refused.
void PuertoEnRed::aceptar() {
    if (abierto_) abierto_->esperarDecision();
    quizasNueva_ = false;
    if (escucha_() < 0) return;
    const auto aqui = extremo(escucha_(), Lado::propio).value();
    constexpr int kDescriptores = 64;
    for (int candidato = 0; candidato < kDescriptores; ++candidato) {
        if (!iguales(extremo(candidato, Lado::ajeno), aqui)) continue;
        const auto suya = extremo(candidato, Lado::propio).value();
        if (cliente_ && iguales(suya, cliente_->direccionDelPc)) continue;
        if (cliente_) tomar();
        auto nuevo = std::make_unique<Cliente>();
        nuevo->delPc = candidato;
        nuevo->direccionDelPc = suya;
        // One that was hung up on a moment ago looks like a new one until its end hears of it.
        nuevo->esperarA([&](const tcp_info&) {
            nuevo->propio = Descriptor(::accept4(escucha_(), nullptr, nullptr, SOCK_CLOEXEC));
            return nuevo->propio() >= 0;
        });
        if (nuevo->propio() < 0) continue;
        cliente_ = std::move(nuevo);
        if (!iguales(extremo(cliente_->propio(), Lado::ajeno), suya)) fallar("accept");
        ponerOpcion(cliente_->propio(), IPPROTO_TCP, TCP_NODELAY, 1);
        abrirDispositivo();
        return;
    }
}

void PuertoEnRed::abrirDispositivo() {
    try {
        cliente_->dispositivo =
            dispositivos_.abrir(numero_, AjustesLinea::leer(std::string(kAjustesLinea)), [] {});
    } catch (const ErrorPuerto&) {
        cliente_->seVa = true;
    }
}

// A device that fails ends the connection, once what it had said before has been passed on.
void PuertoEnRed::conDispositivo(const std::function<void(PuertoSerie&)>& hacer) {
    if (!cliente_->dispositivo) return;
    try {
        hacer(*cliente_->dispositivo);
    } catch (const ErrorPuerto& error) {
        cliente_->dispositivo.reset();
        cliente_->seVa = true;
        cliente_->conCorte = trato_ == Trato::parte || error.motivo() != MotivoPuerto::desaparecido;
    }
}

// A frame leaves byte by byte; a block in pieces of one size, which is another one for the next block.
std::size_t PuertoEnRed::porSegmento(std::size_t dichos) const {
    constexpr std::size_t kTamanios = 63;
    if (trato_ == Trato::junta) return dichos;
    return dichos <= kBytesMarco ? 1 : 1 + cliente_->dados % kTamanios;
}

void PuertoEnRed::leerDispositivo() {
    conDispositivo([&](PuertoSerie& dispositivo) {
        std::array<std::uint8_t, 512> trozo;
        while (const auto n = dispositivo.leer(trozo)) {
            if (cliente_->porDar.empty()) cliente_->porSegmento = porSegmento(n);
            const auto dichos = std::span(trozo).first(n);
            cliente_->porDar.insert(cliente_->porDar.end(), dichos.begin(), dichos.end());
        }
        // Time stops at the next byte even while a pause holds the loop's events back.
        dispositivo.umbral(1);
    });
}

// Everything that the PC wrote; when it has closed its end, everything until that.
void PuertoEnRed::tomar() {
    std::array<std::uint8_t, 512> trozo;
    const auto otro = cliente_->otroLado();
    while (!otro || cliente_->tomados < bytesEscritos(*otro)) {
        const auto n = ::recv(cliente_->propio(), trozo.data(), trozo.size(), 0);
        if (n <= 0) {
            cliente_.reset();
            return;
        }
        cliente_->tomados += static_cast<std::uint64_t>(n);
        conDispositivo([&](PuertoSerie& dispositivo) {
            dispositivo.escribir(std::span(trozo).first(static_cast<std::size_t>(n)));
        });
    }
}

// True: there is more to give at this moment.
bool PuertoEnRed::dar() {
    const auto cuantos = std::min(cliente_->porDar.size(), cliente_->porSegmento);
    const std::vector<std::uint8_t> segmento(cliente_->porDar.begin(),
                                             cliente_->porDar.begin() + static_cast<std::ptrdiff_t>(cuantos));
    if (!segmento.empty()) {
        if (::send(cliente_->propio(), segmento.data(), segmento.size(), MSG_NOSIGNAL) !=
            static_cast<ssize_t>(segmento.size())) {
            cliente_.reset();
            return false;
        }
        cliente_->porDar.erase(cliente_->porDar.begin(),
                               cliente_->porDar.begin() + static_cast<std::ptrdiff_t>(segmento.size()));
        cliente_->dados += segmento.size();
        cliente_->esperarA([&](const tcp_info& otro) { return otro.tcpi_bytes_received >= cliente_->dados; });
        return !cliente_->porDar.empty() || cliente_->seVa;
    }
    if (cliente_->seVa) despedir();
    return false;
}

void PuertoEnRed::despedir() {
    const linger sinDemora{1, 0};
    if (cliente_->conCorte)
        ::setsockopt(cliente_->propio(), SOL_SOCKET, SO_LINGER, &sinDemora, sizeof sinDemora);
    cliente_->propio = Descriptor();
    cliente_->esperarA([](const tcp_info&) { return false; });
    cliente_.reset();
    escuchar(trato_ == Trato::junta || dispositivos_.existe(numero_));
}

}  // namespace telvane
