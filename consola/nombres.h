// Names that people give to a station: they stand in file names and in command lines as they are.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include <fmt/format.h>

namespace telvane {

inline bool soloDeNombre(std::string_view texto) {
    constexpr std::string_view kValen = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_";
    return !texto.empty() && texto.find_first_not_of(kValen) == std::string_view::npos;
}

// Empty for a name that an archive takes, otherwise the reason in Spanish.
inline std::string motivoNombre(const std::string& texto) {
    constexpr std::size_t kMasLargo = 64;
    if (texto.size() <= kMasLargo && soloDeNombre(texto)) return "";
    return fmt::format("debe ser de letras sin tilde, cifras, - y _, {} como mucho", kMasLargo);
}

}  // namespace telvane
