// What a raw sensor value means, in whole numbers of the last decimal that the exports show.
#pragma once

#include <cstdint>

namespace telvane::conversiones {

// Half away from zero of the exact decimal value, which binary fractions miss for hundreds of raw values.
constexpr std::int32_t dividirRedondeando(std::int32_t dividendo, std::int32_t divisor) {
    const std::int32_t mitad = divisor / 2;
    return (dividendo + (dividendo < 0 ? -mitad : mitad)) / divisor;
}

// crudo 0 to 65535 (one-byte channels: 0 to 255). The raw values step 4 mV: volts are crudo x 0.004.

// Tenths: crudo x 0.2.
constexpr std::int32_t auxiliar1(std::int32_t crudo) {
    return crudo * 2;
}
// Whole % RH: (volts - 0.82) x 32.25, that is crudo x 0.129 - 26.445.
constexpr std::int32_t humedad(std::int32_t crudo) {
    return dividirRedondeando(crudo * 129 - 26445, 1000);
}
// Tenths of ºC: (volts - 1.5) x 25, that is crudo x 0.1 - 37.5, which never needs its second decimal.
constexpr std::int32_t temperatura(std::int32_t crudo) {
    return crudo - 375;
}
// Tenths of a degree: crudo x 2.25.
constexpr std::int32_t dirViento(std::int32_t crudo) {
    return dividirRedondeando(crudo * 225, 10);
}
// Tenths of km/h: (volts - 0.5) x 50, that is crudo x 0.2 - 25.
constexpr std::int32_t velViento(std::int32_t crudo) {
    return crudo * 2 - 250;
}
// Hundredths of kW/m2: crudo x 2.66 / 1000.
constexpr std::int32_t radSolar(std::int32_t crudo) {
    return dividirRedondeando(crudo * 266, 1000);
}
// Tenths of kPa: (crudo + 98) x 0.899.
constexpr std::int32_t presion(std::int32_t crudo) {
    return dividirRedondeando((crudo + 98) * 899, 100);
}
// Tenths of mm: crudo x 0.2.
constexpr std::int32_t lluvia(std::int32_t crudo) {
    return crudo * 2;
}
// Hundredths: crudo x 0.01.
constexpr std::int32_t auxiliar2(std::int32_t crudo) {
    return crudo;
}
// Hundredths of mm: crudo x 0.01.
constexpr std::int32_t evaporacion(std::int32_t crudo) {
    return crudo;
}

}  // namespace telvane::conversiones
