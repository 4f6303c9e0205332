#include "consola/enteros.h"

#include <fmt/format.h>

#include "platform/numero.h"

namespace telvane {

std::string motivoRango(const std::string& texto, int minimo, int maximo) {
    const auto valor = numeroDe<int>(texto);
    const bool menosNada = valor && *valor == 0 && texto.starts_with('-');
    if (valor && *valor >= minimo && *valor <= maximo && !menosNada) return "";
    return fmt::format("debe ser un número entero de {} a {}", minimo, maximo);
}

int leerEntero(const std::string& texto) {
    return numeroDe<int>(texto).value_or(0);
}

}  // namespace telvane
