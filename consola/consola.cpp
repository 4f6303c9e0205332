#include "consola/consola.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>

#include <fmt/format.h>

#include "consola/codigos_salida.h"
#include "platform/contrasena.h"
#include "platform/cp1252.h"
#include "platform/destino.h"
#include "platform/flujos.h"
#include "platform/motivos.h"
#include "platform/texto_visible.h"

namespace telvane {

namespace {

// Back to the line's start, and what stands there erased.
constexpr std::string_view kBorrarLinea = "\r\x1b[K";

// Of a terminal that does not tell its own.
constexpr unsigned kAnchoSinDecir = 80;

}  // namespace

Consola::Consola(EntornoConsola& entorno)
    : entorno_(entorno),
      hayTerminal_(::isatty(entorno.errores) == 1),
      salidaEnTerminal_(::isatty(entorno.salida) == 1) {}

Consola::~Consola() {
    progreso("");
}

// Worker threads write here as well, so the loop is not run while a reader is slow.
int Consola::escribir(int descriptor, std::string_view texto) const {
    return escribirTodo(descriptor, texto, [this] { return haySenal(entorno_); });
}

int Consola::escribirEn(int descriptor, std::string_view texto) {
    progreso("");
    const int motivo = escribir(descriptor, texto);
    if (motivo == EINTR) interrumpir();
    return motivo;
}

void Consola::exigirSalida() const {
    if (entorno_.salida >= 0) return;
    throw ErrorCli(CodigoSalida::fallo, quejaDeSalida(EBADF));
}

void Consola::exigirSalidaPropia() const {
    exigirSalida();
    const auto suya = identidad(entorno_.salida);
    if (suya && suya == identidad(entorno_.errores))
        throw ErrorNombre(
            "la salida y los avisos de la orden van al mismo archivo: dé otro a los avisos, con 2>archivo");
}

// A file keeps a logger's bytes as they are; on a terminal they would be orders. 0, or an errno value.
int Consola::mostrar(std::string_view texto) {
    return salidaEnTerminal_ ? escribirEn(entorno_.salida, lineasSinControles(texto))
                             : escribirEn(entorno_.salida, texto);
}

void Consola::resultado(std::string_view texto) {
    if (const int motivo = mostrar(texto); motivo != 0)
        throw ErrorCli(CodigoSalida::fallo, quejaDeSalida(motivo));
}

void Consola::resultadoDe(std::string_view hecho, std::string_view texto) {
    int motivo = 0;
    try {
        motivo = mostrar(texto);
    } catch (const ErrorCli& error) {
        throw ErrorCli(error.codigo(), fmt::format("{}; {}", error.what(), hecho));
    }
    if (motivo != 0) throw ErrorCli(CodigoSalida::fallo, quejaDeSalida(motivo, hecho));
}

void Consola::aviso(std::string_view linea) {
    progreso("");
    static_cast<void>(escribir(entorno_.errores, sinContrasenas(lineasSinControles(linea)) + '\n'));
}

void Consola::avisoFinal(std::string_view programa, const std::exception& error) noexcept {
    decirFinal(entorno_.errores, programa, error, [this] { return haySenal(entorno_); });
}

std::size_t Consola::ancho() const {
    winsize tamano{};
    const bool dicho = ::ioctl(entorno_.errores, TIOCGWINSZ, &tamano) == 0 && tamano.ws_col > 0;
    // In the last column the cursor would stand on the next line already.
    return (dicho ? tamano.ws_col : kAnchoSinDecir) - 1U;
}

void Consola::progreso(const std::string& linea) {
    if (!hayTerminal_ || (linea.empty() && !hayProgreso_)) return;
    static_cast<void>(
        escribir(entorno_.errores, fmt::format("{}{}", kBorrarLinea, primerosCaracteres(linea, ancho()))));
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
        if (n < 0) throw ErrorCli(CodigoSalida::fallo, quejaDeEntrada(errno));
        if (n == 0) break;
        leidos += static_cast<std::size_t>(n);
    }
    bytes.resize(leidos);
    return bytes;
}

}  // namespace telvane
