// A whole number of units, tenths or hundredths as the shortest decimal text: no trailing zeros, no sign on
// zero.
#pragma once

#include <array>
#include <cstdint>

namespace telvane {

// Writes valor / 10^decimales at p, at most 12 characters; decimales 0 to 2. Gives the text's end.
constexpr char* escribirDecimal(char* p, std::int32_t valor, int decimales) {
    if (valor < 0) *p++ = '-';
    auto resto = static_cast<std::uint32_t>(valor < 0 ? -valor : valor);
    for (; decimales > 0 && resto % 10 == 0; --decimales) resto /= 10;
    std::array<char, 12> alReves{};
    std::size_t n = 0;
    for (int cifra = 0; resto != 0 || cifra <= decimales; ++cifra) {
        if (cifra == decimales && cifra > 0) alReves[n++] = '.';
        alReves[n++] = static_cast<char>('0' + resto % 10);
        resto /= 10;
    }
    while (n > 0) *p++ = alReves[--n];
    return p;
}

}  // namespace telvane
