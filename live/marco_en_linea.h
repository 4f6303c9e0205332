// The live frame: 31 bytes, no checksum, no end mark. Its positions, scales and formats are its own and
// differ from the stored record's on purpose.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "link/protocolo.h"

namespace telvane {

// Offsets in bytes from 0; two-byte quantities are big-endian and signed. Bytes 0 to 2 and 18 to 30 are not
// used.
namespace marco {
inline constexpr std::size_t kHumedad = 3;
inline constexpr std::size_t kTemperatura = 5;
inline constexpr std::size_t kDirViento = 7;  // one byte, 2.25 degrees a step
inline constexpr std::size_t kVelViento = 8;
inline constexpr std::size_t kRadSolar = 10;
inline constexpr std::size_t kPresion = 12;  // a high byte above 3 makes both 0
inline constexpr std::size_t kLluvia = 14;
inline constexpr std::size_t kEvaporacion = 16;
}  // namespace marco

// The readings in whole thousandths of their unit, exact.
struct MarcoEnLinea {
    std::int32_t humedad = 0;      // % RH
    std::int32_t temperatura = 0;  // ºC
    std::int32_t dirViento = 0;    // degrees
    std::int32_t velViento = 0;    // km/h
    std::int32_t radSolar = 0;     // kW/m2, hundred-thousandths (0.00264 a count)
    std::int32_t presion = 0;      // kPa
    std::int32_t lluvia = 0;       // mm
    std::int32_t evaporacion = 0;  // mm
};

MarcoEnLinea decodificarMarco(std::span<const std::uint8_t, kBytesMarco> bytes);

// The readings rounded to the decimals that are shown, half away from zero, "-0.0" as "0.0".
struct TextosMarco {
    std::string humedad;
    std::string temperatura;
    std::string dirViento;
    std::string velViento;
    std::string radSolar;
    std::string presion;
    std::string lluvia;
    std::string evaporacion;
};
TextosMarco textosMarco(const MarcoEnLinea& marco);

// The eight labelled lines, each ended by CR LF.
std::string lineasMarco(const TextosMarco& textos);

}  // namespace telvane
