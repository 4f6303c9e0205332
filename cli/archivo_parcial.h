// A base file that is not whole yet: each block stands on the disk as soon as it came.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <vector>

namespace telvane {

// "<destination>.parcial" beside the destination, renamed to it once whole. Blocks that are written again
// replace the earlier ones in place, so that an attempt that gets less far loses nothing of a better one.
// Every failure throws ErrorGuardado.
class ArchivoParcial {
   public:
    // Opens the file, with what an earlier run left in it. One that another run is writing is refused.
    explicit ArchivoParcial(std::filesystem::path destino);
    ArchivoParcial(const ArchivoParcial&) = delete;
    ArchivoParcial& operator=(const ArchivoParcial&) = delete;
    // A file that holds nothing is removed.
    ~ArchivoParcial();

    const std::filesystem::path& ruta() const { return ruta_; }
    // What stands in the file.
    const std::vector<std::uint8_t>& contenido() const { return contenido_; }
    void escribir(std::size_t numero, std::span<const std::uint8_t> bloque);
    // Puts what the file holds aside under "<name>.anterior" and starts empty.
    void apartar();
    // Flushes it and gives it its final name.
    void terminar();

   private:
    void abrir();
    void leer();
    void cerrar();
    [[noreturn]] void fallar(int numero) const;

    std::filesystem::path destino_;
    std::filesystem::path ruta_;
    std::vector<std::uint8_t> contenido_;
    int descriptor_ = -1;
    bool colocado_ = false;
};

}  // namespace telvane
