#include <array>
#include <string_view>

#include "link/puerto_serie.h"
#include "link/velocidades.h"
#include "platform/numero.h"

namespace telvane {

namespace {

[[noreturn]] void rehusar(const std::string& texto, std::string_view que) {
    throw ErrorPuerto(MotivoPuerto::lineaInvalida,
                      "ajustes de línea \"" + texto + "\" no válidos: " + std::string(que));
}

// -1 for anything but a plain decimal number.
int numero(std::string_view texto) {
    return numeroDe<int>(texto).value_or(-1);
}

std::array<std::string_view, 4> partes(const std::string& texto) {
    std::array<std::string_view, 4> campos;
    std::string_view resto = texto;
    for (std::size_t i = 0; i < campos.size(); ++i) {
        const auto coma = resto.find(',');
        const bool ultimo = i + 1 == campos.size();
        if ((coma == std::string_view::npos) != ultimo) {
            rehusar(texto,
                    "se esperan velocidad, paridad, bits de datos y bits de parada, separados por comas");
        }
        campos[i] = resto.substr(0, coma);
        if (!ultimo) resto.remove_prefix(coma + 1);
    }
    return campos;
}

}  // namespace

AjustesLinea AjustesLinea::leer(const std::string& texto) {
    const auto campos = partes(texto);
    AjustesLinea leidos;

    leidos.baudios = numero(campos[0]);
    if (!codigoDeVelocidad(leidos.baudios)) rehusar(texto, "velocidad desconocida");
    const char paridad = campos[1].size() == 1 ? static_cast<char>(campos[1][0] | 0x20) : ' ';
    if (std::string_view("neoms").find(paridad) == std::string_view::npos) {
        rehusar(texto, "la paridad es n, e, o, m o s");
    }
    leidos.paridad = paridad;
    leidos.bitsDatos = numero(campos[2]);
    if (leidos.bitsDatos < 5 || leidos.bitsDatos > 8) rehusar(texto, "los bits de datos van de 5 a 8");
    leidos.bitsParada = numero(campos[3]);
    if (leidos.bitsParada < 1 || leidos.bitsParada > 2) rehusar(texto, "los bits de parada son 1 o 2");
    return leidos;
}

}  // namespace telvane
