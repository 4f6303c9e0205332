// Command lines drawn from what the tool says of itself.
#pragma once

#include <string>
#include <vector>

#include "tests/caza/mundo.h"

namespace telvane {

// An option as the help shows it: "--base", "ARCHIVO"; without a value it is a flag. Without dashes it is
// told by its place.
struct OpcionDeclarada {
    std::string nombre;
    std::string valor;
    bool obligatoria = false;
};
struct OrdenDeclarada {
    std::string nombre;
    std::vector<OpcionDeclarada> opciones;
};

// Every command of the program, read from its help.
std::vector<OrdenDeclarada> declaradas(const std::string& programa);

struct Linea {
    std::vector<std::string> palabras;
    // Those that are told by their place.
    std::vector<std::string> lugares;
};

// A line for one of them; most of them make sense.
Linea linea(Azar& azar, const std::vector<OrdenDeclarada>& ordenes, const Mundo& mundo);

}  // namespace telvane
