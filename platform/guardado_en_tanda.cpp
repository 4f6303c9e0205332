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
#include <set>
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

// Runs a step of a save; the reason why it failed, or nothing.
template <class Paso>
std::string motivoDe(Paso&& paso) {
    try {
        std::forward<Paso>(paso)();
        return {};
    } catch (const std::exception& error) {
        return error.what();
    }
}

}  // namespace

void GuardadoEnTanda::agregar(const std::filesystem::path& ruta, std::string_view bytes,
                              const ReglaDestino& regla, AlTerminar alTerminar) {
    Tanda llena;
    std::shared_lock enCurso(colocando_, std::defer_lock);
    const auto escribirlo = [&] {
        escribir(ArchivoPendiente(revisarDestino(ruta, regla)), bytes, alTerminar);
    };
    const auto motivo = motivoDe([&] {
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
    if (!motivo.empty()) alTerminar(motivo);
    colocar(std::move(llena));
}

// Until each has taken the old one's place, a file and the one that it replaces both fill the disk.
void GuardadoEnTanda::quedarSolo() {
    colocar(std::exchange(tanda_, {}));
    const std::unique_lock hastaQueAcaben(colocando_);
}

// The disk's witness stands open before the first byte of any file that relies on it is written. That of a
// file that fails goes with it: it would keep what was written of it on the disk.
void GuardadoEnTanda::escribir(ArchivoPendiente archivo, std::string_view bytes,
                               const AlTerminar& alTerminar) {
    struct stat datos {};
    const bool juntos =
        ::fstat(archivo.descriptor(), &datos) == 0 && seSincronizaEntero(archivo.descriptor());
    const bool primero = juntos && !tanda_.discos.contains(datos.st_dev);
    Descriptor testigo(primero ? ::fcntl(archivo.descriptor(), F_DUPFD_CLOEXEC, 0) : -1);
    archivo.escribir(comoBytes(bytes));
    if (!juntos) archivo.sincronizar();
    archivo.cerrar();
    if (primero) tanda_.discos.emplace(datos.st_dev, std::move(testigo));
    tanda_.archivos.push_back({std::move(archivo), juntos ? datos.st_dev : dev_t{0}, alTerminar});
}

void GuardadoEnTanda::terminar() {
    const auto resto = [&] {
        const std::scoped_lock turno(cerrojo_);
        return std::exchange(tanda_, {});
    };
    colocar(resto());
}

void GuardadoEnTanda::colocar(Tanda tanda) {
    std::set<dev_t> conFallo;
    for (const auto& [disco, testigo] : tanda.discos) {
        if (testigo() < 0 || ::syncfs(testigo()) != 0) conFallo.insert(disco);
    }
    std::vector<std::string> motivos;
    std::map<std::filesystem::path, int> carpetas;
    for (auto& uno : tanda.archivos) {
        motivos.push_back(motivoDe([&] {
            // Which of its files a disk could not write, each of them tells.
            if (conFallo.contains(uno.disco)) uno.archivo.sincronizar();
            uno.archivo.colocar();
            carpetas.try_emplace(uno.archivo.destino().carpeta(), 0);
        }));
    }
    for (auto& [carpeta, motivo] : carpetas) motivo = sincronizarCarpeta(carpeta);
    for (std::size_t i = 0; i < motivos.size(); ++i) {
        const auto& uno = tanda.archivos[i];
        if (motivos[i].empty())
            motivos[i] = motivoDe(
                [&] { exigirNombre(uno.archivo.destino(), carpetas.at(uno.archivo.destino().carpeta())); });
        uno.alTerminar(motivos[i]);
    }
}

}  // namespace telvane
