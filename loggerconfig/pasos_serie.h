// The serial number write: packing, and the lock-step of six logger bytes. No I/O, no form.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "link/paso.h"
#include "link/protocolo.h"

namespace telvane {

using SerieEmpacada = std::array<std::uint8_t, kBytesSerie>;

// Digits, most significant first; a short entry is filled with zeros on the right ("2080" is 20800000).
SerieEmpacada empacarSerie(std::string_view digitos);

// Empty for a number to give a logger, 8 digits; otherwise why not.
std::string motivoSerie(const std::string& texto);
// The same of the number of a logger or an image that is there: as the programs show it, so that one with
// nibbles above 9 can be named as well.
std::string motivoSerieMostrada(const std::string& texto);

// contador: 1 for the logger's first byte, which the command answers; then the four packed bytes, and the
// last of them once more.
Paso<HitoEnvio> pasoSerie(std::int32_t contador, const SerieEmpacada& serie);

}  // namespace telvane
