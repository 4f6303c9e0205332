// The configuration write: the 107-byte message, and its transfer paced by the logger. No I/O, no form.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace telvane {

// What the message is made of; the texts are UTF-8.
struct ConfigAEnviar {
    std::array<std::string_view, 5> textos;  // user, location, latitude, longitude, altitude
    std::uint8_t intervaloCodigo = 0;
    int hora = 0;
    int minuto = 0;
    int segundo = 0;
    int dia = 1;
    int mes = 1;
    int anio = 2000;  // sent modulo 100
};

// Blanks in front up to the width in characters. A longer text keeps its width: outer blanks beyond it go
// first, then its tail.
std::string rellenado(std::string_view texto, int ancho);

// One byte a character, exactly kBytesMensajeConfig of them.
std::string mensajeConfig(const ConfigAEnviar& config);

// contador: 1 for the logger's first byte. Its bytes are not examined, they pace the transfer.
struct PasoEscritura {
    std::optional<std::uint8_t> respuesta;
    bool fin = false;       // the last message byte is the answer
    bool sobrante = false;  // a byte beyond the last: nothing to answer, the exchange is over
};
PasoEscritura pasoEscritura(std::int32_t contador, std::string_view mensaje);

}  // namespace telvane
