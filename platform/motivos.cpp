#include "platform/motivos.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/resource.h>
#include <sys/statvfs.h>
#include <sys/vfs.h>
#include <unistd.h>

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
    std::string_view consejo;
};

constexpr std::string_view kOtroNombre = "Dé otro nombre";
constexpr std::string_view kPedirAcceso = "Pida acceso al administrador, o dé otro nombre";
constexpr std::string_view kCerrarlo = "Ciérrelo y repita";
constexpr std::string_view kCerrarProgramas = "Cierre programas y repita";
constexpr std::string_view kSubirLimite = "Suba ese límite y repita";
constexpr std::string_view kHacerSitio = "Haga sitio y repita";
constexpr std::string_view kMirarDispositivo = "Revise que esté enchufado, y su nombre";
constexpr std::string_view kMirarConexion = "Revise que esté conectado, y repita";
constexpr std::string_view kMirarRed = "Revise la red, y repita";
constexpr std::string_view kOtroDisco = "Guárdelo en otro disco";
constexpr std::string_view kOtraCarpeta = "Dé otra carpeta";
constexpr std::string_view kRepetir = "Repita; si sigue, avise al servicio técnico";

constexpr Motivo kMotivos[] = {
    {EACCES, "no hay permiso", kPedirAcceso},
    {EAGAIN, "el dispositivo no responde por ahora", kMirarConexion},
    {EBADF, "el archivo o puerto ya no se encuentra abierto", kRepetir},
    {EBUSY, "otro programa lo tiene en uso", kCerrarlo},
    {ECONNABORTED, "el otro lado cortó la conexión", kMirarRed},
    {ECONNRESET, "el otro lado cortó la conexión", kMirarRed},
    {EDQUOT, "la cuota de disco se ha agotado", kHacerSitio},
    {EEXIST, "ya existe", kOtroNombre},
    {EFBIG, "el archivo es demasiado grande", kOtroDisco},
    {EINTR, "la orden fue interrumpida", kRepetir},
    {EINVAL, "el sistema no admite esa orden", kRepetir},
    {EIO, "fallo de entrada o salida", "Revise el disco o el adaptador, y repita"},
    {EISDIR, "es una carpeta", "Dé el nombre de un archivo"},
    {ELOOP, "demasiados enlaces seguidos", kOtroNombre},
    {EMFILE, "la sesión no permite tantos archivos abiertos a la vez (ulimit -n)", kSubirLimite},
    {ENAMETOOLONG, "el nombre es demasiado largo", "Dé uno más corto"},
    {ENFILE, "demasiados archivos abiertos en el sistema", kCerrarProgramas},
    {ENODEV, "el dispositivo no existe", kMirarDispositivo},
    {ENOENT, "no existe", "Revise el nombre"},
    {ENOMEM, "no queda memoria", kCerrarProgramas},
    {ENOSPC, "no queda espacio en el disco", kHacerSitio},
    {ENOTDIR, "una parte de la ruta no es una carpeta", "Revise la ruta"},
    {ENOTEMPTY, "la carpeta no se encuentra vacía", kOtraCarpeta},
    {ENOTSUP, "el sistema no admite esa orden", kRepetir},
    {ENOTTY, "no es un puerto serie", "Dé otro dispositivo"},
    {ENXIO, "el dispositivo no existe", kMirarDispositivo},
    {EOVERFLOW, "el archivo es demasiado grande", kOtroDisco},
    {EPERM, "el sistema no lo permite", kPedirAcceso},
    {EPIPE, "el otro extremo se ha cerrado", "Deje que lea hasta el final, y repita"},
    {EROFS, "el disco es de solo lectura", kOtraCarpeta},
    {ESTALE, "el disco de red ha cambiado", "Vuelva a montarlo y repita"},
    {ETIMEDOUT, "el dispositivo no responde", kMirarConexion},
    {ETXTBSY, "otro programa lo tiene en uso", kCerrarlo},
    {EUCLEAN, "el disco está dañado", "Pida al administrador que lo repare"},
    {EXDEV, "el destino se encuentra en otro disco", kOtraCarpeta},
};

const Motivo* filaDe(int numero) {
    const auto* fila = std::find_if(std::begin(kMotivos), std::end(kMotivos),
                                    [&](const Motivo& m) { return m.numero == numero; });
    return fila == std::end(kMotivos) ? nullptr : fila;
}

std::string conConsejo(std::string_view motivo, std::string_view consejo) {
    return fmt::format("{}. {}", motivo, consejo);
}

}  // namespace

std::string motivoSinConsejo(int numero) {
    const auto* fila = filaDe(numero);
    return fila ? std::string(fila->texto) : fmt::format("error {} del sistema", numero);
}

bool hayLimite(int recurso) {
    rlimit limite{};
    return ::getrlimit(recurso, &limite) == 0 && limite.rlim_cur != RLIM_INFINITY;
}

std::string_view motivoSinMemoria() {
    if (hayLimite(RLIMIT_AS))
        return "no basta la memoria que permite la sesión (ulimit -v). Suba ese límite y repita";
    if (hayLimite(RLIMIT_DATA))
        return "no bastan los datos en memoria que permite la sesión (ulimit -d). Suba ese límite y repita";
    return "no queda memoria. Cierre programas y repita";
}

std::string motivoSistema(int numero) {
    if (numero == ENOMEM) return std::string(motivoSinMemoria());
    const auto* fila = filaDe(numero);
    return conConsejo(motivoSinConsejo(numero), fila ? fila->consejo : kRepetir);
}

std::string motivoEscritura(int numero) {
    if (numero == EFBIG && hayLimite(RLIMIT_FSIZE))
        return conConsejo("pasa del tamaño que permite la sesión (ulimit -f)", kSubirLimite);
    return motivoSistema(numero);
}

std::string conOtroNombre(std::string_view motivo) {
    return conConsejo(motivo, kOtroNombre);
}

namespace {

// A disk may have room, and none for the name of another file. Some file systems do not count them.
bool sinMasArchivos(const std::filesystem::path& carpeta) {
    struct statvfs disco {};
    return ::statvfs(carpeta.c_str(), &disco) == 0 && disco.f_files > 0 && disco.f_favail == 0;
}

}  // namespace

bool esVistaDelSistema(const std::filesystem::path& carpeta) {
    struct statfs datos {};
    return ::statfs(carpeta.c_str(), &datos) == 0 &&
           (datos.f_type == PROC_SUPER_MAGIC || datos.f_type == SYSFS_MAGIC);
}

std::string motivoSinCarpeta(const std::filesystem::path& carpeta) {
    std::error_code error;
    const auto que = std::filesystem::status(carpeta, error).type();
    if (que == std::filesystem::file_type::directory) {
        if (esVistaDelSistema(carpeta)) return std::string(kSinArchivos);
        if (::faccessat(AT_FDCWD, carpeta.c_str(), W_OK | X_OK, AT_EACCESS) != 0) return motivoSistema(errno);
        return sinMasArchivos(carpeta) ? motivoSistema(ENOSPC) : std::string(kSinArchivos);
    }
    if (que == std::filesystem::file_type::none) return motivoSistema(error.value());
    if (que == std::filesystem::file_type::not_found)
        return fmt::format("no existe la carpeta {}. Créela, o dé otra", nombreVisible(carpeta));
    return conConsejo(fmt::format("{} no es una carpeta", nombreVisible(carpeta)), kOtraCarpeta);
}

std::string motivoDe(const std::exception& error) {
    if (const auto* archivo = dynamic_cast<const std::filesystem::filesystem_error*>(&error))
        return fmt::format("{}: {}", nombreVisible(archivo->path1()), motivoSistema(archivo->code().value()));
    if (const auto* sistema = dynamic_cast<const std::system_error*>(&error)) {
        // It is threads that are thrown of so, and it is memory that they lack.
        const int numero = sistema->code().value();
        return motivoSistema(numero == EAGAIN ? ENOMEM : numero);
    }
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
