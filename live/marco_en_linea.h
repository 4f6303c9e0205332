// The live frame: 31 bytes, no checksum, no end mark. Its positions (link/protocolo.h), scales and formats
// are its own and differ from the stored record's on purpose.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "link/protocolo.h"

namespace telvane {

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

// Channels, one bit each from humidity on, that say what no logger measures: an analogue one beyond the ten
// bits of its converter, a direction beyond 360 degrees. The frame carries no checksum; 0 does not make it
// right. Pressure, rain and evaporation may say anything.
unsigned canalesImposibles(std::span<const std::uint8_t, kBytesMarco> bytes);

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
