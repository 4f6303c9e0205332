// What only one simulator at a time may serve.
#pragma once

#include <filesystem>
#include <optional>
#include <string_view>

#include "platform/descriptor.h"

namespace telvane {

// The one spelling of a name, whatever a link of that name leads to.
std::filesystem::path lugarDeNombre(const std::filesystem::path& ruta);

// A name of the system's own, made of the path, which goes with whoever holds the descriptor, however it
// ends. clase: what the path is reserved as. Nothing: another process holds it. Throws std::runtime_error
// with the reason in Spanish.
std::optional<Descriptor> reservar(std::string_view clase, const std::filesystem::path& ruta);

}  // namespace telvane
