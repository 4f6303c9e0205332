// A password that stands in the address of an archive.
#pragma once

#include <algorithm>
#include <span>
#include <string_view>

namespace telvane {

// Overwrites it where the system shows the line to everybody: behind "://USER:" up to "@", and behind
// "password=".
inline void ocultarContrasena(std::span<char> argumento) {
    const std::string_view texto(argumento.data(), argumento.size());
    const auto tapar = [&](std::size_t desde, std::size_t hasta) {
        hasta = std::min(hasta, argumento.size());
        if (desde < hasta)
            std::fill(argumento.begin() + static_cast<std::ptrdiff_t>(desde),
                      argumento.begin() + static_cast<std::ptrdiff_t>(hasta), '*');
    };
    const auto esquema = texto.find("://");
    if (!texto.substr(0, texto.find(':')).ends_with("postgresql") &&
        !texto.substr(0, texto.find(':')).ends_with("postgres"))
        return;
    if (esquema == std::string_view::npos) return;
    const auto inicio = esquema + 3;
    const auto fin = texto.find_first_of("/?", inicio);
    const auto arroba = texto.substr(0, fin).rfind('@');
    const auto puntos = texto.find(':', inicio);
    if (arroba != std::string_view::npos && arroba >= inicio && puntos < arroba) tapar(puntos + 1, arroba);
    constexpr std::string_view kClave = "password=";
    const auto clave = texto.find(kClave, inicio);
    if (clave != std::string_view::npos) tapar(clave + kClave.size(), texto.find('&', clave));
}

}  // namespace telvane
