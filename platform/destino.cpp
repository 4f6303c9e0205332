#include "platform/destino.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/statvfs.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <vector>

#include <fmt/format.h>

#include "platform/archivo.h"
#include "platform/descriptor.h"
#include "platform/minusculas.h"
#include "platform/motivos.h"
#include "platform/texto_visible.h"

namespace telvane {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kSeLee = "de ahí se lee lo que se guarda. Dé otro nombre";
constexpr std::string_view kSeEscribe =
    "ahí va ya lo que el programa dice (>, >> o 2>> de la línea). Dé otro nombre";
constexpr std::string_view kDeUnaBase = "ahí está un archivo histórico u otra base de datos; dé otro nombre";

// Inner failure: the reason on its way to the one place that names the file.
struct Fallo {
    std::string motivo;
    bool porNombre = false;
};

[[noreturn]] void fallar(int numero) {
    throw Fallo{motivoSistema(numero)};
}

void exigir(bool bien) {
    if (!bien) fallar(errno);
}

// Where a chain of symbolic links ends, whether or not something stands there.
fs::path seguirEnlaces(fs::path ruta) {
    constexpr int kMaximo = 40;
    for (int i = 0; i < kMaximo; ++i) {
        std::error_code error;
        if (fs::symlink_status(ruta, error).type() != fs::file_type::symlink) return ruta;
        const auto destino = fs::read_symlink(ruta, error);
        if (error) fallar(error.value());
        ruta = destino.is_absolute() ? destino : ruta.parent_path() / destino;
    }
    fallar(ELOOP);
}

fs::path carpetaDe(const fs::path& ruta) {
    const auto carpeta = ruta.parent_path();
    return carpeta.empty() ? fs::path(".") : carpeta;
}

void revisarNombre(const fs::path& ruta, std::span<const std::string_view> vedadas) {
    if (const auto motivo = motivoDeTerminacion(ruta, vedadas); !motivo.empty()) throw Fallo{motivo, true};
}

// Of the devices, the one that drops what it gets, and a terminal if it is ours.
bool admiteTexto(const struct stat& datos) {
    if (datos.st_rdev == makedev(1, 3)) return true;  // /dev/null
    if (datos.st_rdev == makedev(5, 0)) return true;  // /dev/tty
    return std::ranges::any_of(std::to_array({STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}), [&](int flujo) {
        struct stat suyos {};
        return ::isatty(flujo) == 1 && ::fstat(flujo, &suyos) == 0 && suyos.st_rdev == datos.st_rdev;
    });
}

bool esCorriente(const struct stat& datos) {
    return S_ISFIFO(datos.st_mode) || (S_ISCHR(datos.st_mode) && admiteTexto(datos));
}

int abrirParaEscribir(const fs::path& ruta) {
    return ::open(ruta.c_str(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
}

// A file over which another one is mounted keeps its name, whatever is renamed onto it.
bool esPuntoDeMontaje(const fs::path& ruta) {
    struct statx datos {};
    return ::statx(AT_FDCWD, ruta.c_str(), AT_NO_AUTOMOUNT, STATX_TYPE, &datos) == 0 &&
           (datos.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0;
}

struct stat exigirQueAdmita(const fs::path& carpeta) {
    struct stat datos {};
    if (::stat(carpeta.c_str(), &datos) != 0) {
        if (errno == ENOENT) throw Fallo{motivoSinCarpeta(carpeta)};
        fallar(errno);
    }
    if (!S_ISDIR(datos.st_mode)) fallar(ENOTDIR);
    // Somebody still stands in it.
    if (datos.st_nlink == 0) throw Fallo{"esa carpeta se ha borrado. Dé otra carpeta"};
    if (esVistaDelSistema(carpeta)) throw Fallo{std::string(kSinArchivos)};
    exigir(::faccessat(AT_FDCWD, carpeta.c_str(), W_OK | X_OK, AT_EACCESS) == 0);
    return datos;
}

void revisarCarpeta(const Destino& destino) {
    const auto datos = exigirQueAdmita(carpetaDe(destino.ruta));
    // In a folder like /tmp only its owner may put something in a file's place.
    const auto yo = ::geteuid();
    if (destino.previo && (datos.st_mode & S_ISVTX) != 0 && yo != 0 && yo != datos.st_uid &&
        yo != destino.previo->st_uid) {
        fallar(EPERM);
    }
}

void revisarSitio(const Destino& destino, std::uint64_t bytes) {
    rlimit limite{};
    if (::getrlimit(RLIMIT_FSIZE, &limite) == 0 && limite.rlim_cur < bytes)
        throw Fallo{motivoEscritura(EFBIG)};
    struct statvfs disco {};
    // Some file systems count nothing.
    if (bytes == 0 || ::statvfs(carpetaDe(destino.ruta).c_str(), &disco) != 0 || disco.f_blocks == 0) return;
    const std::uint64_t libres = ::geteuid() == 0 ? disco.f_bfree : disco.f_bavail;
    if (libres * disco.f_frsize < bytes) fallar(ENOSPC);
}

// The archive of many years, or any other data base of its kind, begins so: no output of ours ever takes its
// place.
constexpr std::string_view kComienzoDeBase{"SQLite format 3\0", 16};

// What stands under a name now, from one opening: nobody can put another thing there between two looks.
struct Vista {
    int motivo = 0;  // why it cannot be read, or is not there: an errno value
    struct stat datos {};
    bool esta = false;
    std::vector<std::uint8_t> comienzo = {};

    bool esBaseDeDatos() const {
        return std::string_view(reinterpret_cast<const char*>(comienzo.data()), comienzo.size())
            .starts_with(kComienzoDeBase);
    }
};

// bytes: of its beginning.
Vista mirar(const fs::path& ruta, std::size_t bytes) {
    Vista vista;
    const Descriptor archivo(::open(ruta.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (archivo() < 0) vista.motivo = errno;
    vista.esta = (archivo() < 0 ? ::stat(ruta.c_str(), &vista.datos) : ::fstat(archivo(), &vista.datos)) == 0;
    if (!vista.esta) vista.motivo = errno;
    if (archivo() < 0 || !vista.esta || !S_ISREG(vista.datos.st_mode)) return vista;
    vista.comienzo.resize(bytes);
    const auto leidos = leerDe(archivo(), vista.comienzo);
    if (!leidos) vista.motivo = errno;
    vista.comienzo.resize(leidos.value_or(0));
    return vista;
}

// A file's place on the disk.
std::string lugar(const struct stat& datos) {
    return fmt::format("{}:{}", datos.st_dev, datos.st_ino);
}

// A log that this process itself writes into: replaced, it would take with it what was told, and is told yet.
bool esDondeSeDice(const struct stat& datos) {
    return std::ranges::any_of(std::to_array({STDOUT_FILENO, STDERR_FILENO}), [&](int flujo) {
        const int modo = ::fcntl(flujo, F_GETFL);
        return modo >= 0 && (modo & O_ACCMODE) != O_RDONLY && identidad(flujo) == lugar(datos);
    });
}

// The files beside a data base hold what is not yet in it.
bool estaJuntoAUnaBase(const fs::path& ruta) {
    const auto nombre = ruta.string();
    return std::ranges::any_of(
        std::to_array<std::string_view>({"-wal", "-shm", "-journal"}), [&](std::string_view final) {
            return nombre.ends_with(final) &&
                   mirar(nombre.substr(0, nombre.size() - final.size()), kComienzoDeBase.size())
                       .esBaseDeDatos();
        });
}

// What stands where a file is to go may be worth more than it, where nobody can look at it; motivo: why not.
std::string noSeSabeQueEs(std::string_view motivo) {
    return fmt::format("lo que hay ahí no se puede leer ({}) y no se sabe qué es; dé otro nombre", motivo);
}

void exigirQueSePuedaReemplazar(const Vista& vista, const ReglaDestino& regla) {
    if (vista.motivo != 0) throw Fallo{noSeSabeQueEs(motivoSinConsejo(vista.motivo))};
    if (!regla.porque) return;
    if (const auto porque = regla.porque(vista.comienzo); !porque.empty()) throw Fallo{porque, true};
}

// What stands there already. A file that may not be written is not replaced either, although the folder's
// permission would allow it.
void revisarPrevio(Destino& destino, const ReglaDestino& regla) {
    const auto vista = mirar(destino.ruta, std::max(kComienzoDeBase.size(), destino.nuevo ? 0 : regla.vista));
    if (!vista.esta && vista.motivo != ENOENT) fallar(vista.motivo);
    if (vista.esta && S_ISDIR(vista.datos.st_mode)) fallar(EISDIR);
    if (vista.esta && !S_ISREG(vista.datos.st_mode)) throw Fallo{conOtroNombre(kNoEsArchivoNormal)};
    // The data base would take what stands beside it for its own.
    if (vista.esBaseDeDatos() || estaJuntoAUnaBase(destino.ruta)) throw Fallo{std::string(kDeUnaBase), true};
    if (!vista.esta) return;
    if (esDondeSeDice(vista.datos)) throw Fallo{std::string(kSeEscribe), true};
    if (destino.nuevo) throw Fallo{motivoEscritura(EEXIST)};
    exigir(::faccessat(AT_FDCWD, destino.ruta.c_str(), W_OK, AT_EACCESS) == 0);
    if (esPuntoDeMontaje(destino.ruta)) throw Fallo{conOtroNombre("es un punto de montaje")};
    exigirQueSePuedaReemplazar(vista, regla);
    destino.previo = vista.datos;
}

void revisar(Destino& destino, const ReglaDestino& regla) {
    if (destino.pedido.empty()) throw Fallo{"falta el nombre. Dé el de un archivo"};
    // A name that ends in a slash is a folder's, be it there or not.
    if (!destino.pedido.has_filename()) fallar(EISDIR);
    struct stat datos {};
    const bool esta = ::stat(destino.pedido.c_str(), &datos) == 0;
    if (esta && regla.corriente && esCorriente(datos)) {
        exigir(::faccessat(AT_FDCWD, destino.pedido.c_str(), W_OK, AT_EACCESS) == 0);
        // A process without a terminal cannot open /dev/tty, however long it waits.
        if (S_ISCHR(datos.st_mode)) exigir(Descriptor(abrirParaEscribir(destino.pedido))() >= 0);
        destino.corriente = true;
        destino.ruta = destino.pedido;
        return;
    }
    if (esta && !S_ISREG(datos.st_mode) && !S_ISDIR(datos.st_mode))
        throw Fallo{conOtroNombre(kNoEsArchivoNormal)};
    destino.ruta = seguirEnlaces(destino.pedido);
    revisarNombre(destino.pedido, regla.vedadas);
    revisarNombre(destino.ruta, regla.vedadas);
    regla.leidos.exigirOtro(destino.pedido);
    revisarPrevio(destino, regla);
    // A descriptor's name under /proc leads to a file that may have no name any more.
    if (esta && S_ISREG(datos.st_mode) &&
        (!destino.previo || destino.previo->st_ino != datos.st_ino || destino.previo->st_dev != datos.st_dev))
        throw Fallo{conOtroNombre(kNoEsArchivoNormal)};
    revisarCarpeta(destino);
    revisarSitio(destino, regla.bytes);
}

ErrorGuardado noCreada(const fs::path& carpeta, std::string_view motivo) {
    ErrorGuardado error(fmt::format("no se pudo crear la carpeta {}: {}", nombreVisible(carpeta), motivo));
    return error;
}

// While it lives, the umask takes nothing from a new folder's owner.
class MascaraConDueno {
   public:
    MascaraConDueno() : antes_(::umask(S_IRWXG | S_IRWXO)) { ::umask(antes_ & ~mode_t{S_IRWXU}); }
    MascaraConDueno(const MascaraConDueno&) = delete;
    MascaraConDueno& operator=(const MascaraConDueno&) = delete;
    ~MascaraConDueno() { ::umask(antes_); }

   private:
    mode_t antes_;
};

}  // namespace

std::string sonElMismoArchivo(std::string_view una, std::string_view otra, const fs::path& ruta) {
    return fmt::format("{} y {} son el mismo archivo: {}; dé otro nombre a uno de los dos", una, otra,
                       nombreVisible(ruta));
}

void crearCarpeta(const fs::path& carpeta) {
    const MascaraConDueno mascara;
    std::error_code error;
    fs::create_directories(carpeta, error);
    if (error) throw noCreada(carpeta, motivoSistema(error.value()));
}

void exigirQueSePuedaCrear(const fs::path& carpeta) {
    auto hasta = carpeta;
    struct stat datos {};
    while (::lstat(hasta.c_str(), &datos) != 0 && errno == ENOENT && hasta.has_relative_path())
        hasta = carpetaDe(hasta);
    try {
        exigirQueAdmita(hasta);
    } catch (const Fallo& fallo) {
        throw noCreada(carpeta, fallo.motivo);
    }
}

bool terminaEn(const fs::path& ruta, std::span<const std::string_view> terminaciones) {
    const auto nombre = enMinusculas(ruta.filename().string());
    return std::ranges::any_of(terminaciones, [&](auto final) { return nombre.ends_with(final); });
}

std::string motivoDeTerminacion(const fs::path& ruta, std::span<const std::string_view> vedadas) {
    for (const auto ending : vedadas) {
        if (terminaEn(ruta, std::span(&ending, 1)))
            return conOtroNombre(
                fmt::format("los nombres que terminan en {} son de otra clase de archivo", ending));
    }
    return "";
}

ErrorGuardado noGuardado(const fs::path& ruta, std::string_view motivo) {
    ErrorGuardado error(fmt::format("no se pudo guardar {}: {}", nombreVisible(ruta), motivo));
    return error;
}

void ArchivosLeidos::agregar(const fs::path& ruta) {
    identidades_.insert(identidad(ruta));
}

void ArchivosLeidos::agregar(int descriptor) {
    if (auto suya = identidad(descriptor)) identidades_.insert(std::move(*suya));
}

void ArchivosLeidos::exigirOtro(const fs::path& salida) const {
    if (!identidades_.empty() && identidades_.contains(identidad(salida)))
        throw ErrorNombre(noGuardado(salida, kSeLee).what());
}

void ArchivosLeidos::exigirOtro(int descriptor, std::string_view nombre) const {
    const auto suya = identidad(descriptor);
    if (suya && identidades_.contains(*suya)) throw ErrorNombre(noGuardado(nombre, kSeLee).what());
}

std::string_view motivoDeBaseDeDatos(const fs::path& ruta) {
    const bool esta = mirar(ruta, kComienzoDeBase.size()).esBaseDeDatos() || estaJuntoAUnaBase(ruta);
    return esta ? kDeUnaBase : std::string_view{};
}

fs::path Destino::carpeta() const {
    return carpetaDe(ruta);
}

Destino revisarDestino(const fs::path& ruta, const ReglaDestino& regla) {
    Destino destino{.pedido = ruta, .ruta = ruta, .nuevo = regla.nuevo};
    try {
        revisar(destino, regla);
    } catch (const Fallo& fallo) {
        if (fallo.porNombre) throw ErrorNombre(noGuardado(ruta, fallo.motivo).what());
        throw noGuardado(ruta, fallo.motivo);
    }
    return destino;
}

std::optional<std::string> identidad(int descriptor) {
    struct stat datos {};
    if (::fstat(descriptor, &datos) != 0 || !S_ISREG(datos.st_mode)) return std::nullopt;
    return lugar(datos);
}

std::string identidad(const fs::path& ruta) {
    struct stat datos {};
    if (::stat(ruta.c_str(), &datos) == 0) return lugar(datos);
    fs::path fin = ruta;
    try {
        fin = seguirEnlaces(ruta);
    } catch (const Fallo&) {
        // Links that bite their tail are as good a name as any.
        return ruta.string();
    }
    if (::stat(carpetaDe(fin).c_str(), &datos) != 0) return fin.lexically_normal().string();
    return fmt::format("{}/{}", lugar(datos), fin.filename().string());
}

int abrirCorriente(const Destino& destino) {
    const int descriptor = abrirParaEscribir(destino.ruta);
    if (descriptor >= 0) return descriptor;
    const int motivo = errno;
    struct stat datos {};
    if (motivo == ENXIO && ::stat(destino.ruta.c_str(), &datos) == 0 && S_ISFIFO(datos.st_mode)) return -1;
    throw noGuardado(destino.pedido, motivoSistema(motivo));
}

fs::path conSufijo(const fs::path& ruta, std::string_view sufijo) {
    const long admite = ::pathconf(carpetaDe(ruta).c_str(), _PC_NAME_MAX);
    const std::size_t maximo = admite > 0 ? static_cast<std::size_t>(admite) : NAME_MAX;
    auto nombre = ruta.filename().string();
    if (nombre.size() + sufijo.size() > maximo) {
        std::size_t cuantos = maximo - std::min(maximo, sufijo.size());
        // No half of a character stays.
        const auto sigue = [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U; };
        while (cuantos > 0 && sigue(nombre[cuantos])) --cuantos;
        nombre.resize(cuantos);
    }
    return ruta.parent_path() / (nombre + std::string(sufijo));
}

}  // namespace telvane
