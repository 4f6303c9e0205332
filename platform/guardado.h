// Saving a file whole: the old content stays until the new one is on disk.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>

#include "platform/descriptor.h"
#include "platform/destino.h"

namespace telvane {

inline std::span<const std::uint8_t> comoBytes(std::string_view texto) {
    return {reinterpret_cast<const std::uint8_t*>(texto.data()), texto.size()};
}

// The disk had no place for it.
class ErrorSinSitio : public ErrorGuardado {
   public:
    using ErrorGuardado::ErrorGuardado;
};

// A new file's content under a temporary name beside its destination, and put in its place once it is safe.
// Every failure throws ErrorGuardado; a file that was not placed goes with the object.
class ArchivoPendiente {
   public:
    // An existing file's mode and, as far as the system lets us, its owner are the new one's as well.
    explicit ArchivoPendiente(Destino destino);
    ArchivoPendiente(ArchivoPendiente&& otro) noexcept;
    ArchivoPendiente& operator=(ArchivoPendiente&&) = delete;
    ~ArchivoPendiente();

    const Destino& destino() const { return destino_; }
    // -1 once closed.
    int descriptor() const { return descriptor_(); }
    void escribir(std::span<const std::uint8_t> bytes);
    // Waits until what was written is on disk; also after it was closed.
    void sincronizar();
    void cerrar();
    // Renames it over the destination, or refuses to where a new file was asked for and one is there by now.
    void colocar();

   private:
    void exigir(bool bien) const;
    void adelantar();

    Destino destino_;
    std::string nombre_;
    Descriptor descriptor_;
    std::size_t sinMandar_ = 0;  // bytes of which the disk has not been told yet
    bool colocado_ = false;
};

// One file: written, synced, put in place, its folder synced. The old file is untouched after a failure, but
// for the last step's: then the new one is there, and a power cut may bring back the old one. No temporary
// file stays. Throws ErrorGuardado.
void guardarAtomico(const std::filesystem::path& ruta, std::span<const std::uint8_t> bytes,
                    const ReglaDestino& regla = {});
void guardarAtomico(const std::filesystem::path& ruta, std::string_view bytes,
                    const ReglaDestino& regla = {});

// The same for a file that is written piece by piece; left before terminar, nothing has happened.
class GuardadoAtomico {
   public:
    explicit GuardadoAtomico(const std::filesystem::path& ruta, const ReglaDestino& regla = {})
        : archivo_(revisarDestino(ruta, regla)) {}

    void escribir(std::span<const std::uint8_t> bytes) { archivo_.escribir(bytes); }
    void escribir(std::string_view bytes) { archivo_.escribir(comoBytes(bytes)); }
    void terminar();

   private:
    ArchivoPendiente archivo_;
};

// The steps, for who writes a file in another way. Each gives 0 or an errno value.
int sincronizar(int descriptor);
// The mode and, where possible, the owner of what stands at the destination, for what is to replace it. A new
// file is its owner's to read, whatever the umask.
int conservarModo(int descriptor, const Destino& destino);
// Renames it to the destination: over what stands there, or EEXIST where a new file was asked for.
int colocar(const std::filesystem::path& desde, const Destino& destino);
// Makes a new name durable: 0 or an errno value. A folder that we may not read, or that its file system has
// no way to flush, is no failure.
int sincronizarCarpeta(const std::filesystem::path& carpeta);
// What that gave for the folder of a file that stands there by now; throws ErrorGuardado.
void exigirNombre(const Destino& destino, int motivo);

}  // namespace telvane
