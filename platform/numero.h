// A text that is one number and nothing else.
#pragma once

#include <charconv>
#include <concepts>
#include <optional>
#include <string_view>
#include <system_error>

namespace telvane {

// nullopt for a text that is empty, has more than the number in it (a blank, a plus sign) or does not fit.
template <std::integral Numero>
std::optional<Numero> numeroDe(std::string_view texto, int base = 10) {
    Numero valor{};
    const auto* hasta = texto.data() + texto.size();
    const auto [fin, error] = std::from_chars(texto.data(), hasta, valor, base);
    return error == std::errc() && fin == hasta ? std::optional(valor) : std::nullopt;
}

// The same; "inf" and "nan" are numbers here.
template <std::floating_point Numero>
std::optional<Numero> numeroDe(std::string_view texto) {
    Numero valor{};
    const auto* hasta = texto.data() + texto.size();
    const auto [fin, error] = std::from_chars(texto.data(), hasta, valor);
    return error == std::errc() && fin == hasta ? std::optional(valor) : std::nullopt;
}

}  // namespace telvane
