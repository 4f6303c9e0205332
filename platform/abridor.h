// The program with which the desktop opens a file by its kind.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <optional>

namespace telvane {

// Starts it in a session of its own: what ends us, a terminal's interrupt included, does not end what was
// opened. nullopt: there is no such program.
std::optional<pid_t> lanzarAbridor(const std::filesystem::path& ruta);

}  // namespace telvane
