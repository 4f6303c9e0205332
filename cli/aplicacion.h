// The console tool as a routine: arguments in, exit status out.
#pragma once

#include <string>
#include <vector>

#include "cli/entorno_cli.h"

namespace telvane {

// argumentos: without the program's name. Results go to the environment's output, talk and errors to its
// error stream. Returns the exit status (see CodigoSalida); throws nothing.
int correrCli(const std::vector<std::string>& argumentos, EntornoCli& entorno);

}  // namespace telvane
