// A text without what stands at its ends, and the words between.
#pragma once

#include <algorithm>
#include <string_view>
#include <vector>

namespace telvane {

// Without the characters of cuales at either end.
constexpr std::string_view recortado(std::string_view texto, std::string_view cuales = " ") {
    const auto inicio = texto.find_first_not_of(cuales);
    if (inicio == std::string_view::npos) return {};
    return texto.substr(inicio, texto.find_last_not_of(cuales) - inicio + 1);
}

// What stands between the characters of blancos; nothing of it is empty.
inline std::vector<std::string_view> palabras(std::string_view texto, std::string_view blancos) {
    std::vector<std::string_view> todas;
    for (texto = recortado(texto, blancos); !texto.empty(); texto = recortado(texto, blancos)) {
        const auto fin = std::min(texto.find_first_of(blancos), texto.size());
        todas.push_back(texto.substr(0, fin));
        texto.remove_prefix(fin);
    }
    return todas;
}

}  // namespace telvane
