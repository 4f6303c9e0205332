#include "platform/guardado.h"

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <utility>

#include <fmt/format.h>

#include "platform/motivos.h"
#include "platform/texto_visible.h"

namespace telvane {

namespace {

namespace fs = std::filesystem;

constexpr mode_t kPermisos = 07777;
constexpr mode_t kModoNuevo = 0666;
// Until it has the mode of what it replaces, nobody else reads it.
constexpr mode_t kModoPropio = 0600;
// Smaller files, as a memory and its tables are, have nothing to gain.
constexpr std::size_t kDeUnaVez = 4U << 20;

// ".<name>.XXXXXX" beside the destination, with a number that nobody guesses.
std::string nombreTemporal(const fs::path& destino) {
    std::uint32_t azar = 0;
    // A system that has just started may have none yet.
    if (::getrandom(&azar, sizeof azar, GRND_NONBLOCK) != sizeof azar) {
        azar = static_cast<std::uint32_t>(std::chrono::steady_clock::now().time_since_epoch().count());
    }
    // The dot is the name's own: the suffix must cut what stands behind it.
    const auto oculto = destino.parent_path() / ('.' + destino.filename().string());
    return conSufijo(oculto, fmt::format(".{:08x}", azar)).string();
}

int abrirTemporal(std::string& nombre, const Destino& destino) {
    constexpr int kIntentos = 100;
    for (int i = 0; i < kIntentos; ++i) {
        nombre = nombreTemporal(destino.ruta);
        const int descriptor = ::open(nombre.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                                      destino.previo ? kModoPropio : kModoNuevo);
        if (descriptor >= 0 || errno != EEXIST) return descriptor;
    }
    return -1;
}

// What the group may do, where the group is not the old one: no more than everybody.
mode_t sinGrupo(mode_t modo) {
    return (modo & ~mode_t{07070}) | ((modo & 07U) << 3U);
}

int escribirBytes(int descriptor, std::span<const std::uint8_t> bytes) {
    while (!bytes.empty()) {
        const auto n = ::write(descriptor, bytes.data(), bytes.size());
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) return errno;
        bytes = bytes.subspan(static_cast<std::size_t>(n));
    }
    return 0;
}

}  // namespace

int sincronizar(int descriptor) {
    int resultado = 0;
    do {
        resultado = ::fsync(descriptor);
    } while (resultado != 0 && errno == EINTR);
    return resultado == 0 ? 0 : errno;
}

int conservarModo(int descriptor, const Destino& destino) {
    struct stat propio {};
    if (::fstat(descriptor, &propio) != 0) return errno;
    if (!destino.previo) {
        // A copy that nobody can read is none. Where the file system knows no modes, it counts as it is.
        if ((propio.st_mode & S_IRUSR) == 0)
            static_cast<void>(::fchmod(descriptor, (propio.st_mode & kPermisos) | S_IRUSR));
        return 0;
    }
    const auto& previo = *destino.previo;
    mode_t modo = previo.st_mode & kPermisos;
    if (propio.st_uid != previo.st_uid || propio.st_gid != previo.st_gid) {
        // Only root gives a file away; a group of ours we may give.
        if (::fchown(descriptor, previo.st_uid, previo.st_gid) != 0 &&
            ::fchown(descriptor, static_cast<uid_t>(-1), previo.st_gid) != 0) {
            modo = sinGrupo(modo);
        }
    }
    return ::fchmod(descriptor, modo) == 0 ? 0 : errno;
}

int colocar(const fs::path& desde, const Destino& destino) {
    const auto* de = desde.c_str();
    const auto* a = destino.ruta.c_str();
    if (!destino.nuevo) return ::rename(de, a) == 0 ? 0 : errno;
    if (::renameat2(AT_FDCWD, de, AT_FDCWD, a, RENAME_NOREPLACE) == 0) return 0;
    if (errno != EINVAL && errno != ENOSYS) return errno;
    // A file system that does not know this may know links, which replace nothing either.
    if (::link(de, a) == 0) {
        ::unlink(de);
        return 0;
    }
    if (errno == EEXIST) return EEXIST;
    struct stat datos {};
    if (::lstat(a, &datos) == 0) return EEXIST;
    return ::rename(de, a) == 0 ? 0 : errno;
}

int sincronizarCarpeta(const fs::path& carpeta) {
    const Descriptor descriptor(::open(carpeta.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (descriptor() < 0) return errno == EACCES ? 0 : errno;
    const int motivo = sincronizar(descriptor());
    return motivo == EINVAL || motivo == ENOSYS || motivo == EOPNOTSUPP ? 0 : motivo;
}

void exigirNombre(const Destino& destino, int motivo) {
    if (motivo == 0) return;
    throw ErrorGuardado(fmt::format("{} quedó escrito, pero el disco no lo confirma: {}",
                                    nombreVisible(destino.pedido), motivoEscritura(motivo)));
}

ArchivoPendiente::ArchivoPendiente(Destino destino)
    : destino_(std::move(destino)), descriptor_(abrirTemporal(nombre_, destino_)) {
    exigir(descriptor_() >= 0);
    errno = conservarModo(descriptor_(), destino_);
    if (errno == 0) return;
    const int motivo = errno;
    ::unlink(nombre_.c_str());
    errno = motivo;
    exigir(false);
}

ArchivoPendiente::ArchivoPendiente(ArchivoPendiente&& otro) noexcept
    : destino_(std::move(otro.destino_)),
      nombre_(std::move(otro.nombre_)),
      descriptor_(std::move(otro.descriptor_)),
      sinMandar_(otro.sinMandar_),
      colocado_(std::exchange(otro.colocado_, true)) {}

ArchivoPendiente::~ArchivoPendiente() {
    if (!colocado_) ::unlink(nombre_.c_str());
}

void ArchivoPendiente::exigir(bool bien) const {
    if (bien) return;
    const int numero = errno;
    const auto motivo = motivoEscritura(numero);
    if (numero == ENOSPC || numero == EDQUOT) throw ErrorSinSitio(noGuardado(destino_.pedido, motivo).what());
    throw noGuardado(destino_.pedido, motivo);
}

void ArchivoPendiente::escribir(std::span<const std::uint8_t> bytes) {
    errno = escribirBytes(descriptor_(), bytes);
    exigir(errno == 0);
    sinMandar_ += bytes.size();
    if (sinMandar_ >= kDeUnaVez) adelantar();
}

// The disk takes what there is while the rest is still made, and sincronizar waits for little. A file system
// that does not know this is told everything then, and then a failure is ours too.
void ArchivoPendiente::adelantar() {
    sinMandar_ = 0;
    static_cast<void>(::sync_file_range(descriptor_(), 0, 0, SYNC_FILE_RANGE_WRITE));
}

void ArchivoPendiente::sincronizar() {
    // What the system failed to write is told to whoever opens the file next.
    if (descriptor_() < 0)
        descriptor_ = Descriptor(::open(nombre_.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
    exigir(descriptor_() >= 0);
    errno = telvane::sincronizar(descriptor_());
    exigir(errno == 0);
}

void ArchivoPendiente::cerrar() {
    if (descriptor_() < 0) return;
    errno = descriptor_.cerrar();
    exigir(errno == 0);
}

void ArchivoPendiente::colocar() {
    errno = telvane::colocar(nombre_, destino_);
    exigir(errno == 0);
    colocado_ = true;
}

void GuardadoAtomico::terminar() {
    archivo_.sincronizar();
    archivo_.cerrar();
    archivo_.colocar();
    exigirNombre(archivo_.destino(), sincronizarCarpeta(archivo_.destino().carpeta()));
}

void guardarAtomico(const fs::path& ruta, std::span<const std::uint8_t> bytes, const ReglaDestino& regla) {
    GuardadoAtomico guardado(ruta, regla);
    guardado.escribir(bytes);
    guardado.terminar();
}

void guardarAtomico(const fs::path& ruta, std::string_view bytes, const ReglaDestino& regla) {
    guardarAtomico(ruta, comoBytes(bytes), regla);
}

}  // namespace telvane
