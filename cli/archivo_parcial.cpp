#include "cli/archivo_parcial.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

#include <fmt/format.h>

#include "link/protocolo.h"
#include "platform/guardado.h"

namespace telvane {

namespace {

namespace fs = std::filesystem;

constexpr mode_t kModo = 0666;

fs::path conSufijo(fs::path ruta, const char* sufijo) {
    ruta += sufijo;
    return ruta;
}

// A link stays a link: what it points to is replaced.
fs::path sinEnlaces(fs::path ruta) {
    std::error_code error;
    if (!fs::is_symlink(ruta, error)) return ruta;
    const auto verdadera = fs::weakly_canonical(ruta, error);
    return error ? ruta : verdadera;
}

}  // namespace

ArchivoParcial::ArchivoParcial(fs::path destino)
    : destino_(sinEnlaces(std::move(destino))), ruta_(conSufijo(destino_, ".parcial")) {
    abrir();
    try {
        leer();
    } catch (...) {
        cerrar();
        throw;
    }
}

ArchivoParcial::~ArchivoParcial() {
    if (!colocado_ && contenido_.empty()) ::unlink(ruta_.c_str());
    cerrar();
}

void ArchivoParcial::fallar(int numero) const {
    throw ErrorGuardado(fmt::format("no se pudo guardar {}: {}", ruta_.string(), motivoSistema(numero)));
}

void ArchivoParcial::abrir() {
    std::error_code error;
    if (fs::is_directory(destino_, error)) fallar(EISDIR);
    descriptor_ = ::open(ruta_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, kModo);
    if (descriptor_ < 0 && errno == ENOENT)
        throw ErrorGuardado(fmt::format("no se pudo guardar {}: no existe la carpeta {}", ruta_.string(),
                                        ruta_.parent_path().string()));
    if (descriptor_ < 0) fallar(errno);
    if (::flock(descriptor_, LOCK_EX | LOCK_NB) == 0) return;
    const int motivo = errno;
    cerrar();
    fallar(motivo == EWOULDBLOCK ? EBUSY : motivo);
}

void ArchivoParcial::leer() {
    contenido_.resize(kBytesMemoria);
    const auto n = ::pread(descriptor_, contenido_.data(), contenido_.size(), 0);
    if (n < 0) fallar(errno);
    // A block that was cut is no block.
    contenido_.resize(static_cast<std::size_t>(n) / kBytesBloque * kBytesBloque);
}

void ArchivoParcial::cerrar() {
    if (descriptor_ >= 0) ::close(descriptor_);
    descriptor_ = -1;
}

void ArchivoParcial::escribir(std::size_t numero, std::span<const std::uint8_t> bloque) {
    const std::size_t desde = numero * kBytesBloque;
    const auto n = ::pwrite(descriptor_, bloque.data(), bloque.size(), static_cast<off_t>(desde));
    if (n != static_cast<ssize_t>(bloque.size())) fallar(n < 0 ? errno : ENOSPC);
    contenido_.resize(std::max(contenido_.size(), desde + bloque.size()));
    std::copy(bloque.begin(), bloque.end(), contenido_.begin() + static_cast<std::ptrdiff_t>(desde));
}

void ArchivoParcial::apartar() {
    if (::rename(ruta_.c_str(), conSufijo(ruta_, ".anterior").c_str()) != 0) fallar(errno);
    cerrar();
    contenido_.clear();
    abrir();
}

void ArchivoParcial::terminar() {
    if (::ftruncate(descriptor_, static_cast<off_t>(contenido_.size())) != 0) fallar(errno);
    if (::fsync(descriptor_) != 0) fallar(errno);
    if (::rename(ruta_.c_str(), destino_.c_str()) != 0) fallar(errno);
    colocado_ = true;
    // Makes the new name durable; the file is saved whether or not the file system can do that.
    const auto carpeta = destino_.has_parent_path() ? destino_.parent_path() : fs::path(".");
    const int descriptor = ::open(carpeta.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) return;
    ::fsync(descriptor);
    ::close(descriptor);
}

}  // namespace telvane
