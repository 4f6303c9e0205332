#include "platform/motivos.h"

#include <sys/resource.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <iterator>
#include <new>
#include <string_view>
#include <system_error>

#include <fmt/format.h>

#include "platform/texto_visible.h"

namespace telvane {

namespace {

struct Motivo {
    int numero;
    std::string_view texto;
};

constexpr Motivo kMotivos[] = {
    {EACCES, "no hay permiso"},
    {EAGAIN, "el dispositivo no responde por ahora"},
    {EBADF, "el archivo o puerto ya no se encuentra abierto"},
    {EBUSY, "otro programa lo tiene en uso"},
    {EDQUOT, "la cuota de disco se ha agotado"},
    {EEXIST, "ya existe"},
    {EFBIG, "el archivo es demasiado grande"},
    {EINTR, "la orden fue interrumpida"},
    {EINVAL, "el sistema no admite esa orden"},
    {EIO, "fallo de entrada o salida"},
    {EISDIR, "es una carpeta"},
    {ELOOP, "demasiados enlaces seguidos"},
    {EMFILE, "demasiados archivos abiertos"},
    {ENAMETOOLONG, "el nombre es demasiado largo"},
    {ENFILE, "demasiados archivos abiertos en el sistema"},
    {ENODEV, "el dispositivo no existe"},
    {ENOENT, "no existe"},
    {ENOMEM, "no queda memoria"},
    {ENOSPC, "no queda espacio en el disco"},
    {ENOTDIR, "una parte de la ruta no es una carpeta"},
    {ENOTEMPTY, "la carpeta no se encuentra vacia"},
    {ENOTSUP, "el sistema no admite esa orden"},
    {ENOTTY, "no es un puerto serie"},
    {ENXIO, "el dispositivo no existe"},
    {EOVERFLOW, "el archivo es demasiado grande"},
    {EPERM, "el sistema no lo permite"},
    {EPIPE, "el otro extremo se ha cerrado"},
    {EROFS, "el disco es de solo lectura"},
    {ESTALE, "el disco de red ha cambiado"},
    {ETIMEDOUT, "el dispositivo no responde"},
    {ETXTBSY, "otro programa lo tiene en uso"},
    {EXDEV, "el destino se encuentra en otro disco"},
};

}  // namespace

std::string motivoSistema(int numero) {
    const auto* motivo = std::find_if(std::begin(kMotivos), std::end(kMotivos),
                                      [&](const Motivo& m) { return m.numero == numero; });
    if (motivo == std::end(kMotivos)) return fmt::format("error {} del sistema", numero);
    return std::string(motivo->texto);
}

std::string motivoEscritura(int numero) {
    if (numero == EEXIST) return fmt::format("{}. Dé otro nombre", motivoSistema(numero));
    rlimit limite{};
    if (numero == EFBIG && ::getrlimit(RLIMIT_FSIZE, &limite) == 0 && limite.rlim_cur != RLIM_INFINITY)
        return "pasa del tamaño que permite la sesión (ulimit -f)";
    return motivoSistema(numero);
}

std::string motivoSinCarpeta(const std::filesystem::path& carpeta) {
    std::error_code error;
    const auto que = std::filesystem::status(carpeta, error).type();
    if (que == std::filesystem::file_type::directory) return std::string(kSinArchivos);
    if (que == std::filesystem::file_type::none) return motivoSistema(error.value());
    if (que == std::filesystem::file_type::not_found)
        return fmt::format("no existe la carpeta {}", nombreVisible(carpeta));
    return fmt::format("{} no es una carpeta", nombreVisible(carpeta));
}

std::string motivoDe(const std::exception& error) {
    if (const auto* archivo = dynamic_cast<const std::filesystem::filesystem_error*>(&error))
        return fmt::format("{}: {}", nombreVisible(archivo->path1()), motivoSistema(archivo->code().value()));
    if (const auto* sistema = dynamic_cast<const std::system_error*>(&error))
        return motivoSistema(sistema->code().value());
    if (dynamic_cast<const std::bad_alloc*>(&error) != nullptr) return motivoSistema(ENOMEM);
    return error.what();
}

std::string queDice(const std::exception_ptr& fallo) {
    try {
        std::rethrow_exception(fallo);
    } catch (const std::exception& error) {
        return motivoDe(error);
    } catch (...) {
        return "error desconocido";
    }
}

}  // namespace telvane
