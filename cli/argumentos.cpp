#include "cli/argumentos.h"

#include <algorithm>
#include <charconv>
#include <system_error>

#include <fmt/format.h>

namespace telvane {

namespace {

std::string motivoRango(const std::string& texto, int minimo, int maximo) {
    int valor = 0;
    const auto [fin, error] = std::from_chars(texto.data(), texto.data() + texto.size(), valor);
    const bool entero = error == std::errc() && fin == texto.data() + texto.size();
    if (entero && valor >= minimo && valor <= maximo) return "";
    return fmt::format("debe ser un número entero de {} a {}", minimo, maximo);
}

}  // namespace

CLI::Validator comprobar(std::string (*motivo)(const std::string&)) {
    return CLI::Validator([motivo](std::string& texto) { return motivo(texto); }, "");
}

std::string motivoSerie(const std::string& texto) {
    const bool cifras = std::all_of(texto.begin(), texto.end(), [](char c) { return c >= '0' && c <= '9'; });
    return cifras && texto.size() == 8 ? "" : "el número de serie tiene 8 cifras, ceros incluidos";
}

std::string motivoPerfil(const std::string& texto) {
    return texto == "estricto" || texto == "ampliado" ? "" : "debe ser estricto o ampliado";
}

std::string motivoSegundos(const std::string& texto) {
    return motivoRango(texto, 1, 3600);
}
std::string motivoCuenta(const std::string& texto) {
    return motivoRango(texto, 1, 1'000'000'000);
}
std::string motivoReintentos(const std::string& texto) {
    return motivoRango(texto, 0, 1000);
}

Perfil leerPerfil(const std::string& texto) {
    return texto == "ampliado" ? Perfil::ampliado : Perfil::estricto;
}

int leerEntero(const std::string& texto) {
    int valor = 0;
    std::from_chars(texto.data(), texto.data() + texto.size(), valor);
    return valor;
}

}  // namespace telvane
