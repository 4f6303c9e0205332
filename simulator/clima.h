// Plausible weather of an Andean dry-land farm as functions of time, and its raw readings.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <span>

#include "data/muestra.h"
#include "link/protocolo.h"
#include "platform/reloj.h"

namespace telvane {

// Seconds of local time since 1970-01-01 00:00.
using SegundosCiviles = std::chrono::seconds;
SegundosCiviles segundosCiviles(const FechaHora& momento);
FechaHora fechaHoraDe(std::chrono::nanoseconds civil);

// What stands at one moment; rain and evaporation are those of the hour that ends there.
struct Tiempo {
    double temperatura = 0;      // ºC
    double humedad = 0;          // % RH, 8 to 100
    double radiacion = 0;        // kW/m2
    double viento = 0;           // km/h
    std::uint8_t direccion = 0;  // steps of 2.25 degrees, 1 to 160; a compass point is a multiple of 10
    double presion = 0;          // kPa
    double lluvia = 0;           // mm
    double evaporacion = 0;      // mm
};

// The same number gives the same weather, whatever was asked before.
class Clima {
   public:
    explicit Clima(std::uint32_t semilla = 1) : semilla_(semilla) {}
    Tiempo en(SegundosCiviles momento) const;

   private:
    enum class Canal : std::uint32_t { dia, nubes, viento, direccion, giro, presion, lluvia };
    double azar(Canal canal, std::int64_t lugar) const;
    double onda(Canal canal, double segundos, double periodo) const;
    double lluviaEn(double segundos) const;

    std::uint32_t semilla_;
};

// The 32 bytes of a stored record, stamped with the moment; the evaporation channels are always filled.
std::array<std::uint8_t, registro_muestra::kBytes> registroDeMuestra(const Tiempo& tiempo,
                                                                     const FechaHora& momento);
// The 31 bytes of a live frame.
std::array<std::uint8_t, kBytesMarco> marcoEnLinea(const Tiempo& tiempo);

// hour, minute, second, day, month, year of the century in packed decimal.
std::array<std::uint8_t, 6> relojBcd(const FechaHora& momento);
// The reverse; what is no number of its field carries on as the calendar does, the century is 2000.
FechaHora fechaHoraBcd(std::span<const std::uint8_t, 6> bytes);

}  // namespace telvane
