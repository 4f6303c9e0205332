#include "link/puerto_termios.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <string>
#include <system_error>
#include <utility>

#include <fmt/format.h>

#include "link/codigos_suceso.h"
#include "link/espera_sitio.h"
#include "link/vaciado.h"
#include "link/velocidades.h"
#include "platform/motivos.h"
#include "platform/texto_visible.h"

namespace telvane {

namespace {

constexpr std::chrono::milliseconds kPlazoSalida{200};
constexpr std::chrono::milliseconds kRevisionLinea{100};

// A request that a driver may not know: a pseudo-terminal has neither modem lines nor counters, some adapters
// have only one of them. What follows does without.
template <class Argumento>
bool siSePuede(int descriptor, unsigned long orden, Argumento argumento) {
    return ::ioctl(descriptor, orden, argumento) == 0;
}

ErrorPuerto errorDeApertura(const std::filesystem::path& dispositivo, int numero) {
    const auto nombre = nombreVisible(dispositivo);
    switch (numero) {
        case ENOENT:
        case ENXIO:
        case ENODEV:
        case ENOTDIR:
        case EIO:
            return {MotivoPuerto::noExiste,
                    fmt::format("el puerto {} no existe: enchufe el adaptador, o dé otro", nombre)};
        case EACCES:
        case EPERM: {
            const auto grupo = grupoConPermiso(dispositivo);
            const auto remedio =
                grupo.empty() ? std::string("pida acceso al administrador")
                              : fmt::format("agregue su usuario al grupo {} e inicie sesión de nuevo", grupo);
            return {MotivoPuerto::sinPermiso,
                    fmt::format("no hay permiso para usar {}: {}", nombre, remedio)};
        }
        case EBUSY:
            return {MotivoPuerto::ocupado,
                    fmt::format("el puerto {} está en uso por otro programa: ciérrelo y repita", nombre)};
        case EISDIR:
        case ENOTTY:
        case EINVAL:
            return {MotivoPuerto::noEsTerminal,
                    fmt::format("{} no es un puerto serie: dé el del adaptador, como /dev/ttyUSB0", nombre)};
        default:
            return {MotivoPuerto::noSeAbre,
                    fmt::format("no se pudo abrir el puerto {}: {}", nombre, motivoSistema(numero))};
    }
}

int abrirDispositivo(const std::filesystem::path& dispositivo) {
    // Without waiting for a carrier, and without becoming our controlling terminal.
    const int numero = ::open(dispositivo.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (numero < 0) throw errorDeApertura(dispositivo, errno);
    return numero;
}

// Whether somebody sits at this terminal and talks to us through it.
bool esLaPropia(int descriptor) {
    const pid_t sesion = ::tcgetsid(descriptor);
    if (sesion > 0 && sesion == ::getsid(0)) return true;
    struct stat este {};
    if (::fstat(descriptor, &este) != 0) return false;
    constexpr std::array<int, 3> kNuestros = {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO};
    return std::any_of(kNuestros.begin(), kNuestros.end(), [&](int nuestro) {
        struct stat otro {};
        return ::isatty(nuestro) == 1 && ::fstat(nuestro, &otro) == 0 && otro.st_rdev == este.st_rdev &&
               otro.st_dev == este.st_dev;
    });
}

// Waits until what was written is on the wire, not for ever: a driver may be stuck.
void dejarSalir(int descriptor) {
    const auto final = std::chrono::steady_clock::now() + kPlazoSalida;
    int quedan = 0;
    while (siSePuede(descriptor, TIOCOUTQ, &quedan) && quedan > 0 &&
           std::chrono::steady_clock::now() < final) {
        ::poll(nullptr, 0, 1);
    }
}

speed_t codigoDe(int baudios) {
    const auto codigo = codigoDeVelocidad(baudios);
    if (!codigo)
        throw ErrorPuerto(MotivoPuerto::lineaInvalida, fmt::format("velocidad {} no admitida", baudios));
    return *codigo;
}

tcflag_t marcasDe(const AjustesLinea& ajustes) {
    constexpr std::array<tcflag_t, 4> kBits = {CS5, CS6, CS7, CS8};
    // Without HUPCL closing leaves DTR as it is, so the logger is not reset between two exchanges.
    tcflag_t marcas = CREAD | CLOCAL | kBits.at(static_cast<std::size_t>(ajustes.bitsDatos - 5));
    if (ajustes.bitsParada == 2) marcas |= CSTOPB;
    switch (ajustes.paridad) {
        case 'e':
            return marcas | PARENB;
        case 'o':
            return marcas | PARENB | PARODD;
        case 'm':
            return marcas | PARENB | PARODD | CMSPAR;
        case 's':
            return marcas | PARENB | CMSPAR;
        default:
            return marcas;
    }
}

}  // namespace

PuertoTermios::Descriptor::~Descriptor() {
    if (previos_) {
        dejarSalir(numero_);
        ::tcsetattr(numero_, TCSANOW, &*previos_);
    }
    // Somebody else may keep the port open, and with it the reservation.
    if (reservado_) siSePuede(numero_, TIOCNXCL, nullptr);
    ::close(numero_);
}

// Whoever made a pseudo-terminal keeps it alive, and with it what was set on it, although the process that
// set it was killed.
bool esPseudoterminal(int descriptor) {
    constexpr unsigned kPrimera = 136;
    constexpr unsigned kUltima = 143;
    struct stat datos {};
    return ::fstat(descriptor, &datos) == 0 && major(datos.st_rdev) >= kPrimera &&
           major(datos.st_rdev) <= kUltima;
}

// TIOCEXCL keeps others out but not the superuser; a lock keeps out whoever asks for it. The system takes
// both back when the process ends, but for what outlives it: there the lock is enough.
bool PuertoTermios::Descriptor::reservar() {
    if (::flock(numero_, LOCK_EX | LOCK_NB) != 0) return false;
    reservado_ = true;
    if (!esPseudoterminal(numero_)) siSePuede(numero_, TIOCEXCL, nullptr);
    return true;
}

PuertoTermios::PuertoTermios(Bucle& bucle, const std::filesystem::path& dispositivo,
                             const AjustesLinea& ajustes, std::function<void()> alDespertar)
    : bucle_(bucle),
      dispositivo_(dispositivo),
      alDespertar_(std::move(alDespertar)),
      descriptor_(abrirDispositivo(dispositivo)) {
    if (!::isatty(descriptor_())) throw errorDeApertura(dispositivo_, errno);
    if (esLaPropia(descriptor_())) {
        throw ErrorPuerto(
            MotivoPuerto::noEsTerminal,
            fmt::format("{} es la terminal de este programa, no el puerto del registrador: dé el del "
                        "adaptador, como /dev/ttyUSB0",
                        nombreVisible(dispositivo_)));
    }
    // Before anything changes on the line, which may be in somebody else's use.
    if (!descriptor_.reservar()) throw errorDeApertura(dispositivo_, errno == EWOULDBLOCK ? EBUSY : errno);
    // The system raises both lines when it opens a port.
    dtr(ajustes.dtr);
    rts(ajustes.rts);
    configurar(ajustes);
    pedirBajaLatencia();
    vaciarEntrada();
    primeraMirada();
    vigilancia_ = bucle_.vigilarLectura(descriptor_(), [this] { alLlegar(); });
}

PuertoTermios::~PuertoTermios() {
    vigilancia_.reset();
    revision_.reset();
    vaciarEntrada();
    if (banderasPrevias_) {
        serial_struct datos{};
        if (siSePuede(descriptor_(), TIOCGSERIAL, &datos)) {
            datos.flags = *banderasPrevias_;
            siSePuede(descriptor_(), TIOCSSERIAL, &datos);
        }
    }
}

void PuertoTermios::configurar(const AjustesLinea& ajustes) {
    const auto velocidad = codigoDe(ajustes.baudios);
    termios linea{};
    if (::tcgetattr(descriptor_(), &linea) != 0) throw errorDeApertura(dispositivo_, errno);
    descriptor_.recordar(linea);
    // A break would come as a byte 0; it is told by the counters instead.
    linea.c_iflag = IGNBRK;
    linea.c_oflag = 0;
    linea.c_lflag = 0;
    linea.c_cflag = marcasDe(ajustes);
    linea.c_cc[VMIN] = static_cast<cc_t>(umbral_);
    linea.c_cc[VTIME] = 0;
    ::cfsetispeed(&linea, velocidad);
    ::cfsetospeed(&linea, velocidad);
    if (::tcsetattr(descriptor_(), TCSANOW, &linea) != 0) throw errorDeApertura(dispositivo_, errno);

    // The call succeeds when any part of it did.
    termios puesta{};
    if (::tcgetattr(descriptor_(), &puesta) != 0 || ::cfgetospeed(&puesta) != velocidad) {
        throw ErrorPuerto(MotivoPuerto::lineaInvalida,
                          fmt::format("el puerto {} no admite {} baudios: use otro adaptador",
                                      nombreVisible(dispositivo_), ajustes.baudios));
    }
}

// Some USB adapters hold the last bytes of a block back for up to 16 ms, hoping for more.
void PuertoTermios::pedirBajaLatencia() {
    serial_struct datos{};
    if (!siSePuede(descriptor_(), TIOCGSERIAL, &datos) ||
        (static_cast<unsigned>(datos.flags) & ASYNC_LOW_LATENCY) != 0)
        return;
    const int previas = datos.flags;
    datos.flags = static_cast<int>(static_cast<unsigned>(datos.flags) | ASYNC_LOW_LATENCY);
    if (siSePuede(descriptor_(), TIOCSSERIAL, &datos)) banderasPrevias_ = previas;
}

void PuertoTermios::alLlegar() {
    // A descriptor that hung up is readable for ever: the owner is told once, and reads the rest when it
    // likes.
    if (colgado()) {
        vigilancia_.reset();
        revision_.reset();
    }
    // The owner may destroy us from here.
    const auto despertar = alDespertar_;
    despertar();
}

bool PuertoTermios::colgado() const {
    pollfd estado{descriptor_(), 0, 0};
    return ::poll(&estado, 1, 0) > 0;
}

void PuertoTermios::desaparecio() {
    throw ErrorPuerto(MotivoPuerto::desaparecido,
                      fmt::format("el puerto {} ha desaparecido: vuelva a enchufar el adaptador",
                                  nombreVisible(dispositivo_)));
}

// One deadline for the whole: a driver may say again and again that it has room, and take nothing.
void PuertoTermios::escribir(std::span<const std::uint8_t> bytes) {
    const auto final = std::chrono::steady_clock::now() + kPlazoEscritura;
    while (!bytes.empty()) {
        const auto n = ::write(descriptor_(), bytes.data(), bytes.size());
        if (n > 0) {
            bytes = bytes.subspan(static_cast<std::size_t>(n));
        } else if (n == 0 || errno == EAGAIN) {
            if (esperarSitio(descriptor_(), final)) continue;
            throw ErrorPuerto(
                MotivoPuerto::otro,
                fmt::format("el puerto {} no acepta más datos: desenchufe y vuelva a enchufar el adaptador",
                            nombreVisible(dispositivo_)));
        } else if (errno != EINTR) {
            desaparecio();
        }
    }
}

std::size_t PuertoTermios::leer(std::span<std::uint8_t> destino) {
    if (destino.empty()) return 0;
    while (true) {
        const auto n = ::read(descriptor_(), destino.data(), destino.size());
        if (n > 0) return static_cast<std::size_t>(n);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0 && errno == EAGAIN) return 0;
        // With VMIN above 0 an idle line gives EAGAIN, so 0 is the end, as is any other error.
        vigilancia_.reset();
        revision_.reset();
        desaparecio();
    }
}

// The system compares the count itself: one wake-up for a block instead of one for each byte.
void PuertoTermios::umbral(int bytes) {
    const int pedido = std::clamp(bytes, 1, kUmbralMaximo);
    if (pedido == umbral_) return;
    termios linea{};
    if (::tcgetattr(descriptor_(), &linea) != 0) return;  // gone: told by the next read
    linea.c_cc[VMIN] = static_cast<cc_t>(pedido);
    if (::tcsetattr(descriptor_(), TCSANOW, &linea) == 0) umbral_ = pedido;
}

// Flushed, and read as well: a pseudo-terminal may still be handing bytes over while it is flushed.
void PuertoTermios::vaciarEntrada() {
    ::tcflush(descriptor_(), TCIFLUSH);
    vaciar(descriptor_());
}

void PuertoTermios::ponerLinea(int linea, bool alta) {
    siSePuede(descriptor_(), alta ? TIOCMBIS : TIOCMBIC, &linea);
}

void PuertoTermios::dtr(bool alto) {
    ponerLinea(TIOCM_DTR, alto);
}
void PuertoTermios::rts(bool alto) {
    ponerLinea(TIOCM_RTS, alto);
}
void PuertoTermios::romper(bool encendido) {
    siSePuede(descriptor_(), encendido ? TIOCSBRK : TIOCCBRK, nullptr);
}

// A pseudo-terminal tells neither. The modem lines are asked for only where there are no counters, which
// count their changes too: some USB adapters need a transfer of a millisecond to tell them.
void PuertoTermios::primeraMirada() {
    serial_icounter_struct cuentas{};
    if (siSePuede(descriptor_(), TIOCGICOUNT, &cuentas)) {
        cuentas_ = cuentas;
        return;
    }
    int lineas = 0;
    if (siSePuede(descriptor_(), TIOCMGET, &lineas)) lineas_ = lineas;
}

void PuertoTermios::mirarCuentas() {
    serial_icounter_struct cuentas{};
    if (!cuentas_ || !siSePuede(descriptor_(), TIOCGICOUNT, &cuentas)) return;
    anotar(cambiosDeCuentas(*cuentas_, cuentas));
    cuentas_ = cuentas;
}

void PuertoTermios::mirarLineas() {
    int lineas = 0;
    if (!lineas_ || !siSePuede(descriptor_(), TIOCMGET, &lineas)) return;
    anotar(cambiosDeLineas(*lineas_, lineas));
    lineas_ = lineas;
}

void PuertoTermios::anotar(const std::vector<int>& codigos) {
    sucesos_.insert(sucesos_.end(), codigos.begin(), codigos.end());
}

std::vector<int> PuertoTermios::sucesosDeLinea() {
    mirarCuentas();
    return std::exchange(sucesos_, {});
}

void PuertoTermios::vigilarLinea(bool si) {
    revision_.reset();
    // After a hang-up there is nothing to look at.
    if (si && vigilancia_ && (cuentas_ || lineas_)) armarRevision();
}

void PuertoTermios::armarRevision() {
    revision_ = bucle_.alarma(kRevisionLinea, [this] {
        armarRevision();
        mirarCuentas();
        mirarLineas();
        if (sucesos_.empty()) return;
        // The owner may destroy us from here.
        const auto despertar = alDespertar_;
        despertar();
    });
}

std::vector<int> cambiosDeCuentas(const serial_icounter_struct& antes, const serial_icounter_struct& ahora) {
    using Cuenta = int serial_icounter_struct::*;
    constexpr std::pair<Cuenta, int> kCuentas[] = {
        {&serial_icounter_struct::brk, suceso::kParada},
        {&serial_icounter_struct::frame, suceso::kMarco},
        {&serial_icounter_struct::parity, suceso::kParidad},
        {&serial_icounter_struct::overrun, suceso::kSobrecarga},
        {&serial_icounter_struct::buf_overrun, suceso::kDesbordamiento},
        {&serial_icounter_struct::cts, suceso::kCts},
        {&serial_icounter_struct::dsr, suceso::kDsr},
        {&serial_icounter_struct::dcd, suceso::kCd},
        {&serial_icounter_struct::rng, suceso::kTimbre}};
    std::vector<int> codigos;
    for (const auto& [cuenta, codigo] : kCuentas) {
        if (antes.*cuenta != ahora.*cuenta) codigos.push_back(codigo);
    }
    return codigos;
}

std::vector<int> cambiosDeLineas(int antes, int ahora) {
    std::vector<int> codigos;
    const int cambiadas = antes ^ ahora;
    if (cambiadas & TIOCM_CTS) codigos.push_back(suceso::kCts);
    if (cambiadas & TIOCM_DSR) codigos.push_back(suceso::kDsr);
    if (cambiadas & TIOCM_CD) codigos.push_back(suceso::kCd);
    if (cambiadas & ahora & TIOCM_RI) codigos.push_back(suceso::kTimbre);
    return codigos;
}

bool PuertosSistema::existe(int numero) const {
    mapa_.actualizar();
    const auto dispositivo = mapa_.dispositivo(numero);
    if (dispositivo && esDireccionTcp(dispositivo->native())) return true;
    std::error_code error;
    return dispositivo && std::filesystem::exists(*dispositivo, error);
}

std::unique_ptr<PuertoSerie> PuertosSistema::abrir(int numero, const AjustesLinea& ajustes,
                                                   std::function<void()> alDespertar) {
    mapa_.actualizar();
    const auto dispositivo = mapa_.dispositivo(numero);
    if (!dispositivo)
        throw ErrorPuerto(MotivoPuerto::noExiste,
                          fmt::format("no existe COM{}: enchufe su adaptador y repita", numero));
    if (const auto direccion = leerDireccionTcp(dispositivo->native())) {
        return std::make_unique<PuertoTcp>(bucle_, conexiones_, *direccion, std::move(alDespertar));
    }
    return std::make_unique<PuertoTermios>(bucle_, *dispositivo, ajustes, std::move(alDespertar));
}

}  // namespace telvane
