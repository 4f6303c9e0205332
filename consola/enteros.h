// Whole numbers as values of options.
#pragma once

#include <string>

namespace telvane {

// Empty for a whole number within the bounds, otherwise the reason in Spanish.
std::string motivoRango(const std::string& texto, int minimo, int maximo);
// Of a text that passed the check above.
int leerEntero(const std::string& texto);

}  // namespace telvane
