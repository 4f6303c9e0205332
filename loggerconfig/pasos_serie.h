// The serial number write: packing, and the lock-step of six logger bytes. No I/O, no form.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace telvane {

using SerieEmpacada = std::array<std::uint8_t, 4>;

// Digits, most significant first; a short entry is filled with zeros on the right ("2080" is 20800000).
SerieEmpacada empacarSerie(std::string_view digitos);

// Empty for a number as the logger carries it, 8 digits; otherwise why not.
std::string motivoSerie(const std::string& texto);

// contador: 0 for the logger's first byte.
struct PasoSerie {
    std::optional<std::uint8_t> respuesta;
    bool fin = false;         // the last packed byte goes out for the second time
    bool inesperado = false;  // a byte beyond the sixth
};
PasoSerie pasoSerie(std::int32_t contador, const SerieEmpacada& serie);

}  // namespace telvane
