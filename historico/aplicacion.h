// The archive's program as a routine: arguments in, exit status out.
#pragma once

#include <string>
#include <vector>

#include "historico/ordenes.h"

namespace telvane {

// argumentos: without the program's name. Results go to the environment's output, talk and errors to its
// error stream. Returns the exit status (see CodigoSalida); throws nothing.
int correrHistorico(const std::vector<std::string>& argumentos, EntornoHistorico& entorno);

}  // namespace telvane
