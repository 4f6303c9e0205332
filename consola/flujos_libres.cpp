// Standard streams that a shell has put onto a file.
#include <fcntl.h>

#include <filesystem>
#include <string>
#include <string_view>

#include <fmt/format.h>

#include "consola/consola.h"
#include "platform/destino.h"

namespace telvane {

namespace {

// Whether what is written there goes into a file.
bool escribeEnArchivo(int descriptor) {
    const int modo = ::fcntl(descriptor, F_GETFL);
    return modo >= 0 && (modo & O_ACCMODE) != O_RDONLY && identidad(descriptor).has_value();
}

// Why nothing may be written there; empty: it may.
std::string motivoContra(int descriptor, std::string_view que, const ArchivosLeidos& leidos) {
    if (!escribeEnArchivo(descriptor)) return {};
    try {
        leidos.exigirOtro(descriptor, que);
    } catch (const ErrorNombre& error) {
        return error.what();
    }
    std::error_code sinNombre;
    const auto ruta = std::filesystem::read_symlink(fmt::format("/proc/self/fd/{}", descriptor), sinNombre);
    const auto motivo = sinNombre ? std::string_view{} : motivoDeBaseDeDatos(ruta);
    return motivo.empty() ? std::string() : std::string(noGuardado(que, motivo).what());
}

}  // namespace

void Consola::exigirFlujosLibres(const ArchivosLeidos& leidos) {
    const auto contraSalida = motivoContra(entorno_.salida, "la salida de la orden", leidos);
    const auto contraErrores = motivoContra(entorno_.errores, "lo que la orden avisa", leidos);
    if (!contraErrores.empty()) entorno_.errores = contraSalida.empty() ? entorno_.salida : -1;
    if (!contraSalida.empty()) throw ErrorNombre(contraSalida);
    if (!contraErrores.empty()) throw ErrorNombre(contraErrores);
}

}  // namespace telvane
