#include "historico/huella.h"

#include <nettle/sha2.h>

#include <algorithm>

namespace telvane {

namespace {

constexpr std::string_view kCifras = "0123456789abcdef";

}  // namespace

Huella huellaDe(std::span<const std::uint8_t> bytes) {
    static_assert(std::tuple_size_v<Huella> == SHA256_DIGEST_SIZE);
    sha256_ctx contexto;
    sha256_init(&contexto);
    sha256_update(&contexto, bytes.size(), bytes.data());
    Huella huella;
    sha256_digest(&contexto, huella.size(), huella.data());
    return huella;
}

std::string textoDe(const Huella& huella) {
    std::string texto;
    texto.reserve(2 * huella.size());
    for (const auto byte : huella) {
        texto += kCifras[byte / 16];
        texto += kCifras[byte % 16];
    }
    return texto;
}

std::optional<PrincipioDeHuella> PrincipioDeHuella::leer(std::string_view texto) {
    constexpr std::size_t kMinimo = 8;
    if (texto.size() < kMinimo || texto.size() > 2 * std::tuple_size_v<Huella>) return std::nullopt;
    std::string digitos(texto);
    std::transform(digitos.begin(), digitos.end(), digitos.begin(),
                   [](char c) { return c >= 'A' && c <= 'F' ? static_cast<char>(c - 'A' + 'a') : c; });
    const bool todos = std::all_of(digitos.begin(), digitos.end(),
                                   [](char c) { return kCifras.find(c) != std::string_view::npos; });
    return todos ? std::optional(PrincipioDeHuella(std::move(digitos))) : std::nullopt;
}

}  // namespace telvane
