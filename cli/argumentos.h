// Checks of argument values that several commands share. Each gives an empty text or the reason in Spanish.
#pragma once

#include <chrono>
#include <optional>
#include <string>

#include <CLI/CLI.hpp>

#include "data/decodificador.h"

namespace telvane {

// A validator that stands in no help text.
CLI::Validator comprobar(std::string (*motivo)(const std::string&));

std::string motivoSerie(const std::string& texto);       // 8 digits
std::string motivoPerfil(const std::string& texto);      // estricto, ampliado
std::string motivoSegundos(const std::string& texto);    // 1 to 3600
std::string motivoCuenta(const std::string& texto);      // 1 to 1000000000
std::string motivoReintentos(const std::string& texto);  // 0 to 1000

Perfil leerPerfil(const std::string& texto);
// Of a text that passed one of the checks above.
int leerEntero(const std::string& texto);

}  // namespace telvane
