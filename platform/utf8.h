// UTF-8 read one character at a time, whatever stands there.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace telvane {

struct CaracterUtf8 {
    char32_t punto = 0xFFFD;
    std::size_t bytes = 1;
    bool bueno = false;
};

// The character that begins at this place of the text, which reaches so far. A malformed byte is U+FFFD by
// itself and not good; so is each byte of a form that is longer than needed, of a surrogate and of a number
// beyond the last code point.
inline CaracterUtf8 caracterEn(std::string_view texto, std::size_t lugar) {
    constexpr std::array<char32_t, 4> kMenor = {0, 0x80, 0x800, 0x10000};
    const auto byte = [&](std::size_t i) { return static_cast<std::uint8_t>(texto[lugar + i]); };
    const auto b0 = byte(0);
    if (b0 < 0x80) return {.punto = b0, .bytes = 1, .bueno = true};
    const std::size_t siguen = (b0 & 0xE0) == 0xC0   ? 1
                               : (b0 & 0xF0) == 0xE0 ? 2
                               : (b0 & 0xF8) == 0xF0 ? 3
                                                     : 0;
    if (siguen == 0 || siguen >= texto.size() - lugar) return {};
    char32_t punto = b0 & (0x3Fu >> siguen);
    for (std::size_t i = 1; i <= siguen; ++i) {
        if ((byte(i) & 0xC0) != 0x80) return {};
        punto = (punto << 6) | (byte(i) & 0x3F);
    }
    const bool sustituto = punto >= 0xD800 && punto < 0xE000;
    if (punto < kMenor[siguen] || punto > 0x10FFFF || sustituto) return {};
    return {.punto = punto, .bytes = siguen + 1, .bueno = true};
}

}  // namespace telvane
