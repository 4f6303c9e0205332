#include "platform/texto_visible.h"

#include <cstddef>
#include <cstdint>

#include <fmt/format.h>

namespace telvane {

namespace {

constexpr std::uint8_t kDel = 0x7F;
// In UTF-8 the C1 characters are this byte, then 0x80 to 0x9F.
constexpr std::uint8_t kGuiaC1 = 0xC2;
constexpr std::uint8_t kFinC1 = 0x9F;

std::uint8_t byteEn(std::string_view texto, std::size_t lugar) {
    return lugar < texto.size() ? static_cast<std::uint8_t>(texto[lugar]) : std::uint8_t{0};
}

bool continua(std::uint8_t byte) {
    return (byte & 0xC0) == 0x80;
}

// Bytes of the character that begins here; 0: it is malformed.
std::size_t largo(std::string_view texto, std::size_t lugar) {
    const auto guia = byteEn(texto, lugar);
    if (guia < 0x80) return 1;
    const std::size_t bytes = guia >= 0xF0 ? 4 : guia >= 0xE0 ? 3 : 2;
    if (guia < 0xC2 || guia > 0xF4) return 0;
    const auto segundo = byteEn(texto, lugar + 1);
    // Overlong forms, surrogates, and what lies beyond the last character.
    if ((guia == 0xE0 && segundo < 0xA0) || (guia == 0xED && segundo > 0x9F) ||
        (guia == 0xF0 && segundo < 0x90) || (guia == 0xF4 && segundo > 0x8F))
        return 0;
    for (std::size_t i = 1; i < bytes; ++i) {
        if (!continua(byteEn(texto, lugar + i))) return 0;
    }
    return bytes;
}

bool esC1(std::string_view texto, std::size_t lugar) {
    return byteEn(texto, lugar) == kGuiaC1 && continua(byteEn(texto, lugar + 1)) &&
           byteEn(texto, lugar + 1) <= kFinC1;
}

}  // namespace

std::string sinControles(std::string_view utf8) {
    std::string limpio;
    for (std::size_t i = 0; i < utf8.size();) {
        const auto bytes = largo(utf8, i);
        const auto primero = byteEn(utf8, i);
        if (bytes == 0) {
            limpio += "\uFFFD";
        } else if (primero >= 0x20 && primero != kDel && !esC1(utf8, i)) {
            limpio += utf8.substr(i, bytes);
        }
        i += bytes == 0 ? 1 : bytes;
    }
    return limpio;
}

std::string lineasSinControles(std::string_view utf8) {
    std::string limpias;
    for (std::size_t desde = 0;;) {
        const auto hasta = utf8.find('\n', desde);
        limpias += sinControles(utf8.substr(desde, hasta - desde));
        if (hasta == std::string_view::npos) return limpias;
        limpias += '\n';
        desde = hasta + 1;
    }
}

std::string utf8Valido(std::string_view texto) {
    std::string valido;
    for (std::size_t i = 0; i < texto.size();) {
        const auto bytes = largo(texto, i);
        if (bytes == 0 || texto[i] == '\0') {
            valido += "\uFFFD";
            ++i;
        } else {
            valido += texto.substr(i, bytes);
            i += bytes;
        }
    }
    return valido;
}

std::string controlesEscapados(std::string_view json) {
    std::string escapado;
    for (std::size_t i = 0; i < json.size(); ++i) {
        if (byteEn(json, i) == kDel) {
            escapado += "\\u007f";
        } else if (esC1(json, i)) {
            escapado += fmt::format("\\u{:04x}", byteEn(json, ++i));
        } else {
            escapado += json[i];
        }
    }
    return escapado;
}

}  // namespace telvane
