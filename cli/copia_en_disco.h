// That what came over the line stands in its file, as whoever opens it next finds it.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>

#include "platform/destino.h"

namespace telvane {

// The file is not what was written; what is told says where the bytes are now.
class ErrorCopia : public ErrorGuardado {
   public:
    ErrorCopia(const std::string& que, std::optional<std::filesystem::path> aSalvo)
        : ErrorGuardado(que), aSalvo_(std::move(aSalvo)) {}
    // Where the bytes stand whole; none: nowhere.
    const std::optional<std::filesystem::path>& aSalvo() const { return aSalvo_; }

   private:
    std::optional<std::filesystem::path> aSalvo_;
};

// Whether the file of this name holds these bytes and no others.
bool contiene(const std::filesystem::path& ruta, std::span<const std::uint8_t> bytes);
// Throws ErrorCopia where the base file of this name does not hold the image: another program may have
// removed, cut or replaced it since it was written. What stands there stays; the image is saved under a free
// name first, if any can be had.
void exigirEnDisco(const std::filesystem::path& ruta, std::span<const std::uint8_t> imagen);

}  // namespace telvane
