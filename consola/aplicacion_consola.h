// A console program's run: its line is read, what it asks for is done, and how that ends is told.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "consola/consola.h"
#include "platform/argumentos.h"
#include "platform/destino.h"

namespace telvane {

struct ProgramaConsola {
    std::string nombre;
    std::string version;
    std::string descripcion;
    // What the standard output and error never lead into.
    ReglaDestino flujos = {};
};

// What a line asks for. What it throws ends the program: ErrorCli with its own status, ErrorUso with where to
// look as well, ErrorNombre as wrong usage, any other std::exception as a failure.
using OrdenElegida = std::function<void()>;

// declarar: tells the commands; the one that the line chooses sets elegida. argumentos: without the program's
// name. Returns the exit status (see CodigoSalida); throws nothing. A failure is told on standard error
// behind the program's name, wrong usage with a second line that says where to look.
int correrPrograma(const ProgramaConsola& programa, Consola& consola,
                   const std::vector<std::string>& argumentos, OrdenElegida& elegida,
                   const std::function<void(Argumentos&)>& declarar);

}  // namespace telvane
