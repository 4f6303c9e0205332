// How a person names an image.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "data/huella.h"

namespace telvane {

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
