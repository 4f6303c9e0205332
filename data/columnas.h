// The columns of a sample line as text. What a ten-bit converter can give stands ready in tables made by the
// compiler; the conversions work for the other raw values all the same.
//
// Each routine writes a column and its comma at p and gives the place after it. It copies whole cells, so
// that up to 16 bytes after p are overwritten, whatever the column's length.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "data/conversiones.h"
#include "data/numeros_texto.h"

namespace telvane::columnas {

// Text, padding, and the text's length as the last character.
template <std::size_t N>
using Celda = std::array<char, N>;

template <std::size_t N>
constexpr char* copiarCelda(char* p, const Celda<N>& celda) {
    std::copy_n(celda.data(), N, p);
    return p + celda.back();
}

using Conversion = std::int32_t (*)(std::int32_t);

constexpr char* columnaNumero(char* p, std::int32_t valor, int decimales) {
    p = escribirDecimal(p, valor, decimales);
    *p = ',';
    return p + 1;
}

template <Conversion convertir, int kDecimales, std::size_t kCeldas>
inline constexpr auto kTabla = [] {
    std::array<Celda<8>, kCeldas> tabla{};
    for (std::size_t crudo = 0; crudo < kCeldas; ++crudo) {
        auto& celda = tabla[crudo];
        const char* fin =
            columnaNumero(celda.data(), convertir(static_cast<std::int32_t>(crudo)), kDecimales);
        celda.back() = static_cast<char>(fin - celda.data());
    }
    return tabla;
}();

// Kept out of the way of the values that come every day.
template <Conversion convertir, int kDecimales>
[[gnu::noinline, gnu::cold]] char* fueraDeTabla(char* p, std::uint32_t crudo) {
    return columnaNumero(p, convertir(static_cast<std::int32_t>(crudo)), kDecimales);
}

// crudo 0 to 65535.
template <Conversion convertir, int kDecimales>
char* deDosBytes(char* p, std::uint32_t crudo) {
    constexpr std::size_t kCeldas = 1024;
    if (crudo < kCeldas) [[likely]]
        return copiarCelda(p, kTabla<convertir, kDecimales, kCeldas>[crudo]);
    return fueraDeTabla<convertir, kDecimales>(p, crudo);
}

inline char* humedad(char* p, std::uint32_t crudo) {
    return deDosBytes<conversiones::humedad, 0>(p, crudo);
}
inline char* temperatura(char* p, std::uint32_t crudo) {
    return deDosBytes<conversiones::temperatura, 1>(p, crudo);
}
inline char* velViento(char* p, std::uint32_t crudo) {
    return deDosBytes<conversiones::velViento, 1>(p, crudo);
}
inline char* radSolar(char* p, std::uint32_t crudo) {
    return deDosBytes<conversiones::radSolar, 2>(p, crudo);
}
inline char* presion(char* p, std::uint32_t crudo) {
    return deDosBytes<conversiones::presion, 1>(p, crudo);
}
inline char* evaporacion(char* p, std::uint32_t crudo) {
    return deDosBytes<conversiones::evaporacion, 2>(p, crudo);
}
inline char* lluvia(char* p, std::uint8_t crudo) {
    return copiarCelda(p, kTabla<conversiones::lluvia, 1, 256>[crudo]);
}

// Compass points by the raw byte, counter-clockwise from it: 10 is 22.5 degrees. Only these sixteen bytes
// have one.
constexpr std::string_view nombreViento(std::uint32_t crudo) {
    constexpr std::array<std::string_view, 16> kNombres = {"NNO", "NO", "ONO", "O", "OSO", "SO", "SSO", "S",
                                                           "SSE", "SE", "ESE", "E", "ENE", "NE", "NNE", "N"};
    return crudo % 10 == 0 && crudo - 1 < 160 ? kNombres[crudo / 10 - 1] : "---";
}

inline constexpr auto kVientos = [] {
    std::array<Celda<16>, 256> tabla{};
    for (std::uint32_t crudo = 0; crudo < tabla.size(); ++crudo) {
        auto& celda = tabla[crudo];
        char* p = columnaNumero(celda.data(), conversiones::dirViento(static_cast<std::int32_t>(crudo)), 1);
        const auto nombre = nombreViento(crudo);
        p = std::copy(nombre.begin(), nombre.end(), p);
        *p++ = ',';
        celda.back() = static_cast<char>(p - celda.data());
    }
    return tabla;
}();

// Two columns: degrees and compass point.
inline char* viento(char* p, std::uint8_t crudo) {
    return copiarCelda(p, kVientos[crudo]);
}

}  // namespace telvane::columnas
