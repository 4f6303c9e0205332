// A password that stands in an address.
#pragma once

#include <algorithm>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace telvane {

// The key of an address's parameter as the data base's library reads it: "%6f" is a letter as well.
inline std::string claveLeida(std::string_view escrita) {
    const auto cifra = [&](std::size_t lugar) {
        constexpr std::string_view kCifras = "0123456789abcdef";
        const char c = lugar < escrita.size() ? escrita[lugar] : ' ';
        return kCifras.find(c >= 'A' && c <= 'F' ? static_cast<char>(c - 'A' + 'a') : c);
    };
    std::string leida;
    for (std::size_t i = 0; i < escrita.size(); ++i) {
        const auto alta = cifra(i + 1);
        const auto baja = cifra(i + 2);
        const bool cifrada =
            escrita[i] == '%' && alta != std::string_view::npos && baja != std::string_view::npos;
        leida += cifrada ? static_cast<char>(alta * 16 + baja) : escrita[i];
        if (cifrada) i += 2;
    }
    return leida;
}

// Where the next password behind "password=" begins; npos: there is none.
inline std::size_t contrasenaTrasClave(std::string_view texto, std::size_t desde) {
    constexpr std::string_view kFinal = " \t\n\"'?&";
    for (auto igual = texto.find('=', desde); igual != std::string_view::npos;
         igual = texto.find('=', igual + 1)) {
        const auto antes = igual == 0 ? std::string_view::npos : texto.find_last_of(kFinal, igual - 1);
        const auto inicio = antes == std::string_view::npos ? 0 : antes + 1;
        if (claveLeida(texto.substr(inicio, igual - inicio)).ends_with("password")) return igual + 1;
    }
    return std::string_view::npos;
}

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
    // A question mark before "@" is one of the password's own.
    const auto fin = texto.find('/', inicio);
    const auto arroba = texto.substr(0, fin).rfind('@');
    const auto puntos = texto.find(':', inicio);
    if (arroba != std::string_view::npos && arroba >= inicio && puntos < arroba) tapar(puntos + 1, arroba);
    for (auto lugar = contrasenaTrasClave(texto, inicio); lugar != std::string_view::npos;
         lugar = contrasenaTrasClave(texto, lugar))
        tapar(lugar, texto.find('&', lugar));
}

// A message as anybody may read it: in each address of it, what stands between "://USER:" and "@", and behind
// "password=", is left out.
inline std::string sinContrasenas(std::string_view mensaje) {
    constexpr std::string_view kEsquema = "://";
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
    for (auto lugar = contrasenaTrasClave(limpio, 0); lugar != std::string::npos;
         lugar = contrasenaTrasClave(limpio, lugar)) {
        const auto fin =
            std::min({limpio.find_first_of(kFinal, lugar), limpio.find('&', lugar), limpio.size()});
        if (fin > lugar) limpio.replace(lugar, fin - lugar, kEnSuLugar);
    }
    return limpio;
}

}  // namespace telvane
