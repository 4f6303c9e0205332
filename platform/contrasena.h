// A password that stands in an address.
#pragma once

#include <algorithm>
#include <span>
#include <string>
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

// A message as anybody may read it: in each address of it, what stands between "://USER:" and "@", and behind
// "password=", is left out.
inline std::string sinContrasenas(std::string_view mensaje) {
    constexpr std::string_view kEsquema = "://";
    constexpr std::string_view kClave = "password=";
    constexpr std::string_view kFinal = " \t\n\"'";
    constexpr std::string_view kEnSuLugar = "…";
    std::string limpio(mensaje);
    for (auto lugar = limpio.find(kEsquema); lugar != std::string::npos;
         lugar = limpio.find(kEsquema, lugar)) {
        lugar += kEsquema.size();
        const auto fin = std::min(limpio.find_first_of(kFinal, lugar), limpio.size());
        const auto puntos = limpio.find(':', lugar);
        const auto arroba = limpio.rfind('@', fin);
        if (puntos < fin && arroba != std::string::npos && puntos < arroba)
            limpio.replace(puntos + 1, arroba - puntos - 1, kEnSuLugar);
    }
    for (auto lugar = limpio.find(kClave); lugar != std::string::npos; lugar = limpio.find(kClave, lugar)) {
        lugar += kClave.size();
        const auto fin =
            std::min({limpio.find_first_of(kFinal, lugar), limpio.find('&', lugar), limpio.size()});
        if (fin > lugar) limpio.replace(lugar, fin - lugar, kEnSuLugar);
    }
    return limpio;
}

}  // namespace telvane
