// Opening a file with the desktop's program for it.
#pragma once

#include <string>

namespace telvane {

// Starts the program and does not wait for it. Throws ErrorCli when nothing could be started.
void abrirConElEscritorio(const std::string& ruta);

}  // namespace telvane
