// By which an image is known: the SHA-256 of its bytes.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace telvane {

using Huella = std::array<std::uint8_t, 32>;

Huella huellaDe(std::span<const std::uint8_t> bytes);

// 64 digits, small letters.
std::string textoDe(const Huella& huella);

// The first digits of a fingerprint, at least 8 and at most 64, as a person writes them.
class PrincipioDeHuella {
   public:
    // nullopt: too few or too many digits, or something else than digits.
    static std::optional<PrincipioDeHuella> leer(std::string_view texto);
    const std::string& digitos() const { return digitos_; }
    bool esDe(const Huella& huella) const { return textoDe(huella).starts_with(digitos_); }

   private:
    explicit PrincipioDeHuella(std::string digitos) : digitos_(std::move(digitos)) {}
    std::string digitos_;
};

}  // namespace telvane
