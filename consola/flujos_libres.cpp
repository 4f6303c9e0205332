// Standard streams that a shell has put onto a file.
#include <fcntl.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/format.h>

#include "consola/consola.h"
#include "platform/archivo.h"
#include "platform/destino.h"

namespace telvane {

namespace {

// Whether what is written there goes into a file.
bool escribeEnArchivo(int descriptor) {
    const int modo = ::fcntl(descriptor, F_GETFL);
    return modo >= 0 && (modo & O_ACCMODE) != O_RDONLY && identidad(descriptor).has_value();
}

// What the file holds, whatever its name is by now. A log that somebody else opened for us, and that we may
// not read, tells nothing.
std::vector<std::uint8_t> comienzo(const std::filesystem::path& flujo, std::size_t maximo) {
    try {
        return leerArchivo(flujo, maximo);
    } catch (const ErrorLectura&) {
        return {};
    }
}

// Why nothing may be written there; empty: it may.
std::string motivoContra(int descriptor, std::string_view que, const ReglaDestino& regla) {
    if (!escribeEnArchivo(descriptor)) return {};
    try {
        regla.leidos.exigirOtro(descriptor, que);
    } catch (const ErrorNombre& error) {
        return error.what();
    }
    const std::filesystem::path flujo = fmt::format("/proc/self/fd/{}", descriptor);
    std::error_code sinNombre;
    const auto ruta = std::filesystem::read_symlink(flujo, sinNombre);
    if (const auto motivo = sinNombre ? std::string_view{} : motivoDeBaseDeDatos(ruta); !motivo.empty())
        return noGuardado(que, motivo).what();
    const auto porque = regla.porque ? regla.porque(comienzo(flujo, regla.vista)) : std::string();
    return porque.empty() ? porque : noGuardado(que, porque).what();
}

}  // namespace

void Consola::exigirFlujosLibres(const ReglaDestino& regla) {
    const auto contraSalida = motivoContra(entorno_.salida, "la salida de la orden", regla);
    const auto contraErrores = motivoContra(entorno_.errores, "lo que la orden avisa", regla);
    if (!contraErrores.empty()) entorno_.errores = contraSalida.empty() ? entorno_.salida : -1;
    if (!contraSalida.empty()) throw ErrorNombre(contraSalida);
    if (!contraErrores.empty()) throw ErrorNombre(contraErrores);
}

}  // namespace telvane
