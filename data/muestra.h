// One decoded measurement.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>
#include <string_view>

#include "regional/formatos.h"

namespace telvane {

// Offsets in bytes within a 32-byte sample record; two-byte quantities are big-endian.
namespace registro_muestra {
inline constexpr unsigned kHora = 0;  // hour, minute, second, day, month, year: packed decimal
inline constexpr unsigned kDia = 3;
inline constexpr unsigned kMes = 4;
inline constexpr unsigned kAnio = 5;
inline constexpr unsigned kAuxiliar1 = 6;
inline constexpr unsigned kHumedad = 8;
inline constexpr unsigned kTemperatura = 10;
inline constexpr unsigned kDirViento = 12;  // one byte, 2.25 degrees a step
inline constexpr unsigned kVelViento = 13;
inline constexpr unsigned kRadSolar = 15;
inline constexpr unsigned kPresion = 17;
inline constexpr unsigned kLluvia = 19;       // one byte, 0.2 mm a step
inline constexpr unsigned kAuxiliar2 = 21;    // evaporation variant only
inline constexpr unsigned kEvaporacion = 23;  // evaporation variant only
inline constexpr unsigned kBytes = 32;
}  // namespace registro_muestra

using BytesMuestra = std::array<std::uint8_t, registro_muestra::kBytes>;
using BytesMuestraConst = std::span<const std::uint8_t, registro_muestra::kBytes>;
constexpr BytesMuestra copiaDe(BytesMuestraConst registro) {
    BytesMuestra bytes{};
    std::copy(registro.begin(), registro.end(), bytes.begin());
    return bytes;
}

// Time of day.
struct Hora {
    int hora = 0;
    int minuto = 0;
    int segundo = 0;
    bool operator==(const Hora&) const = default;
};

// The numbers hold the value already rounded to the decimals that the exports show.
struct Muestra {
    Fecha fecha;
    Hora hora;
    float auxiliar1 = 0;                  // never exported
    float humedad = 0;                    // % RH, whole
    float temperatura = 0;                // ºC, 2 decimals
    float dirViento = 0;                  // degrees, 1 decimal
    std::string_view dirVientoR = "---";  // compass point, Spanish
    float velViento = 0;                  // km/h, 1 decimal
    float radSolar = 0;                   // kW/m2, 2 decimals
    float presion = 0;                    // kPa, 1 decimal
    float lluvia = 0;                     // mm in the interval, 1 decimal
    float auxiliar2 = 0;                  // evaporation variant only; never exported
    float evaporacion = 0;                // mm in the interval, 2 decimals; evaporation variant only
    bool registroValido = false;
};

}  // namespace telvane
