// The archive that the user means.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "historico/almacen.h"

namespace telvane {

enum class Uso {
    leer,
    reponer,    // what is there, whatever it lacks
    incorporar  // makes it where there is none yet
};

// Why a text names no archive; empty: it may name one. Throws ErrorAlmacen for an address where the library
// that understands them is missing.
std::string motivoDestino(const std::string& destino);

// destino: a file, or postgresql://... atender: called while another program is waited for; what it throws
// ends the wait. Throws ErrorAlmacen, and ErrorGuardado where no file can be made.
std::unique_ptr<Almacen> abrirAlmacen(const std::string& destino, Uso uso,
                                      std::chrono::milliseconds paciencia, std::function<void()> atender);

// The user's own archive. Throws ErrorAlmacen when there is no home.
std::string destinoPorDefecto();

}  // namespace telvane
