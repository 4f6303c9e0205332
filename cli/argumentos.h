// Checks of argument values that several commands share. Each gives an empty text or the reason in Spanish;
// leerEntero reads what passed.
#pragma once

#include <string>

#include "consola/enteros.h"

namespace telvane {

std::string motivoSegundos(const std::string& texto);    // 1 to 3600
std::string motivoCuenta(const std::string& texto);      // 1 to 1000000000
std::string motivoReintentos(const std::string& texto);  // 0 to 1000

}  // namespace telvane
