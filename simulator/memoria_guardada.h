// The file that keeps a simulated logger's memory.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <vector>

#include "platform/descriptor.h"

namespace telvane {

class MemoriaGuardada {
   public:
    // Looks whether it may be written over, and reads what stands there; writes nothing. Throws
    // std::runtime_error with the reason in Spanish.
    explicit MemoriaGuardada(std::filesystem::path ruta);

    // Nothing: there is no such file yet. Shorter than a memory where the file is.
    const std::optional<std::vector<std::uint8_t>>& leida() const { return leida_; }
    // Throws ErrorGuardado.
    void guardar(std::span<const std::uint8_t> imagen);

   private:
    void reservarArchivo();

    std::filesystem::path ruta_;
    // Two that write one file would each lose what the other was told. It may have another name, a hard link,
    // and is another file after each save.
    Descriptor nombre_;
    std::optional<Descriptor> archivo_;
    std::optional<std::vector<std::uint8_t>> leida_;
};

}  // namespace telvane
