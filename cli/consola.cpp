#include "cli/consola.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>

#include <fmt/format.h>

#include "cli/codigos_salida.h"
#include "platform/guardado.h"

namespace telvane {

namespace {

// Back to the line's start, and what stands there erased.
constexpr std::string_view kBorrarLinea = "\r\x1b[K";

// 0, or the reason why not everything could be written.
int escribirTodo(int descriptor, std::string_view texto) {
    while (!texto.empty()) {
        const auto n = ::write(descriptor, texto.data(), texto.size());
        if (n >= 0) {
            texto.remove_prefix(static_cast<std::size_t>(n));
        } else if (errno == EAGAIN) {
            pollfd espera{descriptor, POLLOUT, 0};
            ::poll(&espera, 1, -1);
        } else if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

}  // namespace

Consola::Consola(EntornoCli& entorno) : entorno_(entorno), hayTerminal_(::isatty(entorno.errores) == 1) {}

Consola::~Consola() {
    progreso("");
}

void Consola::resultado(std::string_view texto) {
    progreso("");
    if (const int motivo = escribirTodo(entorno_.salida, texto)) {
        throw ErrorCli(CodigoSalida::fallo,
                       fmt::format("no se pudo escribir en la salida: {}", motivoSistema(motivo)));
    }
}

void Consola::aviso(std::string_view linea) {
    progreso("");
    static_cast<void>(escribirTodo(entorno_.errores, fmt::format("{}\n", linea)));
}

void Consola::progreso(const std::string& linea) {
    if (!hayTerminal_ || (linea.empty() && !hayProgreso_)) return;
    static_cast<void>(escribirTodo(entorno_.errores, fmt::format("{}{}", kBorrarLinea, linea)));
    hayProgreso_ = !linea.empty();
}

// While somebody types or a program is slow, signals still end us.
void Consola::esperarEntrada() {
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
