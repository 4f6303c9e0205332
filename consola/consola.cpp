#include "consola/consola.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdint>

#include <fmt/format.h>

#include "consola/codigos_salida.h"
#include "platform/contrasena.h"
#include "platform/cp1252.h"
#include "platform/guardado.h"
#include "platform/motivos.h"
#include "platform/texto_visible.h"

namespace telvane {

namespace {

// Back to the line's start, and what stands there erased.
constexpr std::string_view kBorrarLinea = "\r\x1b[K";

// Of a terminal that does not tell its own.
constexpr unsigned kAnchoSinDecir = 80;

// How soon a signal ends the wait for a reader who takes nothing.
constexpr int kVistazoMs = 100;

// How much a descriptor that is ready takes without making its writer wait.
std::size_t trozoDe(int descriptor) {
    struct stat datos {};
    const bool archivo = ::fstat(descriptor, &datos) == 0 && S_ISREG(datos.st_mode);
    return archivo ? SIZE_MAX : std::size_t{PIPE_BUF};
}

}  // namespace

Consola::Consola(EntornoConsola& entorno) : entorno_(entorno), hayTerminal_(::isatty(entorno.errores) == 1) {}

Consola::~Consola() {
    progreso("");
}

// Until the descriptor takes bytes, or refuses them; false once a signal came meanwhile. Worker threads wait
// here as well, so the loop is not run.
bool Consola::esperarSalida(int descriptor) const {
    pollfd salida{descriptor, POLLOUT, 0};
    // One that was closed at the start never becomes ready.
    while (descriptor >= 0 && ::poll(&salida, 1, kVistazoMs) == 0) {
        if (entorno_.senal != 0 || entorno_.senalEnEspera()) return false;
    }
    return true;
}

// 0, or the reason why not everything could be written: EINTR after a signal.
int Consola::escribirTodo(int descriptor, std::string_view texto) const {
    const auto trozo = trozoDe(descriptor);
    while (!texto.empty()) {
        if (!esperarSalida(descriptor)) return EINTR;
        const auto n = ::write(descriptor, texto.data(), std::min(texto.size(), trozo));
        if (n >= 0) {
            texto.remove_prefix(static_cast<std::size_t>(n));
        } else if (errno != EAGAIN && errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

int Consola::escribirEn(int descriptor, std::string_view texto) {
    progreso("");
    const int motivo = escribirTodo(descriptor, texto);
    if (motivo == EINTR) interrumpir();
    return motivo;
}

void Consola::exigirSalida() const {
    if (entorno_.salida >= 0) return;
    throw ErrorCli(
        CodigoSalida::fallo,
        "no se pudo escribir en la salida: está cerrada. Ábrala, por ejemplo con >archivo, y repita");
}

void Consola::resultado(std::string_view texto) {
    if (const int motivo = escribirEn(entorno_.salida, texto)) {
        throw ErrorCli(CodigoSalida::fallo,
                       fmt::format("no se pudo escribir en la salida: {}", motivoEscritura(motivo)));
    }
}

void Consola::aviso(std::string_view linea) {
    progreso("");
    static_cast<void>(escribirTodo(entorno_.errores, sinContrasenas(lineasSinControles(linea)) + '\n'));
}

std::size_t Consola::ancho() const {
    winsize tamano{};
    const bool dicho = ::ioctl(entorno_.errores, TIOCGWINSZ, &tamano) == 0 && tamano.ws_col > 0;
    // In the last column the cursor would stand on the next line already.
    return (dicho ? tamano.ws_col : kAnchoSinDecir) - 1U;
}

void Consola::progreso(const std::string& linea) {
    if (!hayTerminal_ || (linea.empty() && !hayProgreso_)) return;
    static_cast<void>(escribirTodo(entorno_.errores,
                                   fmt::format("{}{}", kBorrarLinea, primerosCaracteres(linea, ancho()))));
    hayProgreso_ = !linea.empty();
}

// While somebody types or a program is slow, signals still end us.
void Consola::esperarEntrada() {
    // One that was closed at the start never becomes ready; reading it tells.
    if (entorno_.entrada < 0) return;
    pollfd estado{entorno_.entrada, POLLIN, 0};
    if (::poll(&estado, 1, 0) != 0) return;
    bool lista = false;
    const auto vigilancia = entorno_.bucle.vigilarLectura(entorno_.entrada, [&] { lista = true; });
    while (!esperar(
        entorno_, [&] { return lista; }, std::chrono::hours(1)))
        continue;
}

std::vector<std::uint8_t> Consola::leerEntrada(std::size_t maximo) {
    std::vector<std::uint8_t> bytes(maximo);
    std::size_t leidos = 0;
    while (leidos < maximo) {
        esperarEntrada();
        const auto n = ::read(entorno_.entrada, bytes.data() + leidos, maximo - leidos);
        if (n < 0 && (errno == EINTR || errno == EAGAIN)) continue;
        if (n < 0) {
            throw ErrorCli(CodigoSalida::fallo,
                           fmt::format("no se pudo leer la entrada: {}", motivoSistema(errno)));
        }
        if (n == 0) break;
        leidos += static_cast<std::size_t>(n);
    }
    bytes.resize(leidos);
    return bytes;
}

}  // namespace telvane
