#include "platform/cp1252.h"

#include <algorithm>
#include <array>

#include "platform/utf8.h"

namespace telvane {

namespace {

// Code points of bytes 0x80 to 0x9F; every other byte is its own code point.
constexpr std::array<char16_t, 32> kAltos = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                             0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                             0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                             0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

char byteDe(char32_t punto) {
    if (punto < 0x80 || (punto >= 0xA0 && punto <= 0xFF)) return static_cast<char>(punto);
    const auto lugar = std::find(kAltos.begin(), kAltos.end(), punto);
    if (lugar == kAltos.end()) return '?';
    return static_cast<char>(0x80 + (lugar - kAltos.begin()));
}

// Reads one code point at posicion and moves past it.
char32_t leerPunto(std::string_view texto, std::size_t& posicion) {
    const auto caracter = caracterEn(texto, posicion);
    posicion += caracter.bytes;
    return caracter.punto;
}

}  // namespace

void agregarUtf8(std::string& texto, std::uint8_t byte) {
    const char16_t punto = byte >= 0x80 && byte < 0xA0 ? kAltos[byte - 0x80u] : byte;
    if (punto < 0x80) {
        texto += static_cast<char>(punto);
    } else if (punto < 0x800) {
        texto += static_cast<char>(0xC0 | (punto >> 6));
        texto += static_cast<char>(0x80 | (punto & 0x3F));
    } else {
        texto += static_cast<char>(0xE0 | (punto >> 12));
        texto += static_cast<char>(0x80 | ((punto >> 6) & 0x3F));
        texto += static_cast<char>(0x80 | (punto & 0x3F));
    }
}

std::string utf8DeCp1252(std::span<const std::uint8_t> bytes) {
    std::string texto;
    texto.reserve(bytes.size());
    for (const auto byte : bytes) agregarUtf8(texto, byte);
    return texto;
}

std::string cp1252DeUtf8(std::string_view texto) {
    std::string bytes;
    bytes.reserve(texto.size());
    std::size_t posicion = 0;
    while (posicion < texto.size()) {
        // Runs of ASCII, which is nearly all of a saved file, are copied as they stand.
        std::size_t fin = posicion;
        while (fin < texto.size() && static_cast<std::uint8_t>(texto[fin]) < 0x80) ++fin;
        bytes.append(texto.substr(posicion, fin - posicion));
        posicion = fin;
        if (posicion < texto.size()) bytes += byteDe(leerPunto(texto, posicion));
    }
    return bytes;
}

std::size_t caracteres(std::string_view texto) {
    std::size_t cuenta = 0;
    for (std::size_t posicion = 0; posicion < texto.size(); ++cuenta) leerPunto(texto, posicion);
    return cuenta;
}

std::string_view primerosCaracteres(std::string_view texto, std::size_t cuantos) {
    std::size_t posicion = 0;
    for (; cuantos > 0 && posicion < texto.size(); --cuantos) leerPunto(texto, posicion);
    return texto.substr(0, posicion);
}

}  // namespace telvane
