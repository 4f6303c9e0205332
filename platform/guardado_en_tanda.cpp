#include "platform/guardado_en_tanda.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <map>
#include <utility>

namespace telvane {

namespace {

// A file system syncs 128 tables in hardly more time than one; a kill leaves as many temporary files.
constexpr std::size_t kTanda = 128;

// Since this version the system tells of data that it could not write when a whole file system is synced.
bool elSistemaLoDice() {
    constexpr std::pair<int, int> kDesde{5, 8};
    utsname sistema{};
    if (::uname(&sistema) != 0) return false;
    const std::string_view texto(sistema.release);
    std::pair<int, int> version{0, 0};
    const auto* fin = texto.data() + texto.size();
    const auto mayor = std::from_chars(texto.data(), fin, version.first);
    if (mayor.ptr == fin || *mayor.ptr != '.') return false;
    std::from_chars(mayor.ptr + 1, fin, version.second);
    return version >= kDesde;
}

// Local file systems, known to hand their failures on. Others sync each file by itself.
bool seSincronizaEntero(int descriptor) {
    constexpr auto kConocidos = std::to_array<std::int64_t>(
        {EXT4_SUPER_MAGIC, XFS_SUPER_MAGIC, BTRFS_SUPER_MAGIC, F2FS_SUPER_MAGIC, TMPFS_MAGIC});
    static const bool loDice = elSistemaLoDice();
    struct statfs disco {};
    return loDice && ::fstatfs(descriptor, &disco) == 0 &&
           std::ranges::find(kConocidos, static_cast<std::int64_t>(disco.f_type)) != kConocidos.end();
}

// Runs a step of a save: why it failed, or null.
template <class Paso>
std::exception_ptr falloDe(Paso&& paso) noexcept {
    try {
        std::forward<Paso>(paso)();
        return nullptr;
    } catch (...) {
        return std::current_exception();
    }
}

}  // namespace

void GuardadoEnTanda::agregar(const std::filesystem::path& ruta, std::string_view bytes,
                              const ReglaDestino& regla, const AlTerminar& alTerminar) noexcept {
    Tanda llena;
    std::shared_lock enCurso(colocando_, std::defer_lock);
    const auto escribirlo = [&] {
        escribir(ArchivoPendiente(revisarDestino(ruta, regla)), bytes, alTerminar);
    };
    const auto fallo = falloDe([&] {
        const std::scoped_lock turno(cerrojo_);
        try {
            escribirlo();
        } catch (const ErrorSinSitio&) {
            quedarSolo();
            escribirlo();
        }
        if (tanda_.archivos.size() < kTanda) return;
        llena = std::exchange(tanda_, {});
        enCurso.lock();
    });
    if (fallo) alTerminar(fallo);
    colocar(std::move(llena));
}

// Until each has taken the old one's place, a file and the one that it replaces both fill the disk.
void GuardadoEnTanda::quedarSolo() noexcept {
    colocar(std::exchange(tanda_, {}));
    const std::unique_lock hastaQueAcaben(colocando_);
}

// The disk's witness stands open before the first byte of any file that relies on it is written; where none
// is to be had, the file is synced by itself. That of a file that fails goes with it: it would keep what was
// written of it on the disk. Nothing that needs memory comes behind the bytes.
void GuardadoEnTanda::escribir(ArchivoPendiente archivo, std::string_view bytes,
                               const AlTerminar& alTerminar) {
    tanda_.archivos.reserve(kTanda);
    struct stat datos {};
    const bool entero =
        ::fstat(archivo.descriptor(), &datos) == 0 && seSincronizaEntero(archivo.descriptor());
    std::map<dev_t, Disco> suyo;
    if (entero && !tanda_.discos.contains(datos.st_dev)) {
        Descriptor testigo(::fcntl(archivo.descriptor(), F_DUPFD_CLOEXEC, 0));
        if (testigo() >= 0) suyo.emplace(datos.st_dev, Disco{std::move(testigo)});
    }
    const bool juntos = !suyo.empty() || (entero && tanda_.discos.contains(datos.st_dev));
    Pendiente nuevo{.archivo = std::move(archivo), .disco = nullptr, .alTerminar = alTerminar};
    nuevo.archivo.escribir(comoBytes(bytes));
    if (!juntos) nuevo.archivo.sincronizar();
    nuevo.archivo.cerrar();
    tanda_.discos.merge(suyo);
    if (juntos) nuevo.disco = &tanda_.discos.at(datos.st_dev);
    tanda_.archivos.push_back(std::move(nuevo));
}

void GuardadoEnTanda::terminar() noexcept {
    const auto resto = [&] {
        const std::scoped_lock turno(cerrojo_);
        return std::exchange(tanda_, {});
    };
    colocar(resto());
}

void GuardadoEnTanda::colocar(Tanda tanda) noexcept {
    for (auto& [numero, disco] : tanda.discos) disco.fallo = ::syncfs(disco.testigo()) != 0;
    std::map<std::filesystem::path, int> carpetas;
    for (auto& uno : tanda.archivos) {
        uno.fallo = falloDe([&] {
            uno.carpeta = &carpetas.try_emplace(uno.archivo.destino().carpeta(), 0).first->second;
            // Which of its files a disk could not write, each of them tells.
            if (uno.disco && uno.disco->fallo) uno.archivo.sincronizar();
            uno.archivo.colocar();
        });
    }
    for (auto& [carpeta, motivo] : carpetas) motivo = sincronizarCarpeta(carpeta);
    for (auto& uno : tanda.archivos) {
        if (!uno.fallo) uno.fallo = falloDe([&] { exigirNombre(uno.archivo.destino(), *uno.carpeta); });
        uno.alTerminar(uno.fallo);
    }
}

}  // namespace telvane
