#include "consola/enteros.h"

#include <charconv>
#include <system_error>

#include <fmt/format.h>

namespace telvane {

std::string motivoRango(const std::string& texto, int minimo, int maximo) {
    int valor = 0;
    const auto [fin, error] = std::from_chars(texto.data(), texto.data() + texto.size(), valor);
    const bool entero = error == std::errc() && fin == texto.data() + texto.size();
    if (entero && valor >= minimo && valor <= maximo) return "";
    return fmt::format("debe ser un número entero de {} a {}", minimo, maximo);
}

int leerEntero(const std::string& texto) {
    int valor = 0;
    std::from_chars(texto.data(), texto.data() + texto.size(), valor);
    return valor;
}

}  // namespace telvane
