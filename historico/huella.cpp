#include "historico/huella.h"

#include <algorithm>

#include "platform/minusculas.h"

namespace telvane {

std::optional<PrincipioDeHuella> PrincipioDeHuella::leer(std::string_view texto) {
    static constexpr std::string_view kCifras = "0123456789abcdef";
    constexpr std::size_t kMinimo = 8;
    if (texto.size() < kMinimo || texto.size() > 2 * std::tuple_size_v<Huella>) return std::nullopt;
    auto digitos = enMinusculas(std::string(texto));
    const bool todos = std::all_of(digitos.begin(), digitos.end(),
                                   [](char c) { return kCifras.find(c) != std::string_view::npos; });
    return todos ? std::optional(PrincipioDeHuella(std::move(digitos))) : std::nullopt;
}

}  // namespace telvane
