// The configuration write: the 107-byte message, and its transfer paced by the logger. No I/O, no form.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "link/paso.h"

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

// contador: 1 for the logger's first byte, which the command answers; then the message byte by byte.
Paso<HitoEnvio> pasoEscritura(std::int32_t contador, std::string_view mensaje);

}  // namespace telvane
