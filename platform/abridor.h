// The program with which the desktop opens a file by its kind.
#pragma once

#include <sys/types.h>

#include <filesystem>

namespace telvane {

// Starts it in a session of its own, and with no signal held back or ignored: what ends us, a terminal's
// interrupt included, does not end what was opened, and what is to end that does. Who wants to hear of its
// end waits for it (waitid). Throws std::system_error where it cannot be started (ENOENT: there is no such
// program), and std::filesystem::filesystem_error for a relative name where the folder that we stand in is
// gone.
pid_t lanzarAbridor(const std::filesystem::path& ruta);

}  // namespace telvane
