// A text without what stands at its ends.
#pragma once

#include <string_view>

namespace telvane {

// Without the characters of cuales at either end.
constexpr std::string_view recortado(std::string_view texto, std::string_view cuales = " ") {
    const auto inicio = texto.find_first_not_of(cuales);
    if (inicio == std::string_view::npos) return {};
    return texto.substr(inicio, texto.find_last_not_of(cuales) - inicio + 1);
}

}  // namespace telvane
