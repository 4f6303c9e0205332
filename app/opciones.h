// The command line of telvane.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "data/decodificador.h"

namespace telvane {

struct Opciones {
    std::vector<std::string> com;  // "N=DEVICE"; none: the present devices
    Perfil perfil = Perfil::estricto;
};

// What the arguments ask for: to run with these options, or to end with this exit status after what was
// printed.
struct LineaDeOrdenes {
    std::optional<Opciones> opciones;
    int estado = 0;      // 0 help or version, 2 wrong usage
    std::string salida;  // for standard output
    std::string error;   // for standard error, in Spanish
};

// argumentos: without the program's name.
LineaDeOrdenes leerOrdenes(std::vector<std::string> argumentos);

}  // namespace telvane
