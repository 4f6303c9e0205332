// Letters of ASCII, whatever the session's language: what names, keys and addresses are compared by.
#pragma once

#include <algorithm>
#include <string>

namespace telvane {

constexpr char minuscula(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

inline std::string enMinusculas(std::string texto) {
    std::ranges::transform(texto, texto.begin(), minuscula);
    return texto;
}

}  // namespace telvane
