#include "data/huella.h"

#include <nettle/sha2.h>

#include <string_view>

namespace telvane {

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
    constexpr std::string_view kCifras = "0123456789abcdef";
    std::string texto;
    texto.reserve(2 * huella.size());
    for (const auto byte : huella) {
        texto += kCifras[byte / 16];
        texto += kCifras[byte % 16];
    }
    return texto;
}

}  // namespace telvane
