// The shape of one step of an exchange: what a byte of the logger completed, and what it is answered with.
// The steps themselves stand with their exchanges, as functions of a counter that is 1 for the logger's first
// byte.
#pragma once

#include <cstdint>
#include <optional>

namespace telvane {

// The counter's values at which the logger answers the opening byte and the byte that selects the exchange.
inline constexpr std::int32_t kPrimeraRespuesta = 1;
inline constexpr std::int32_t kSegundaRespuesta = 2;

template <typename Hito>
struct Paso {
    Hito hito{};
    std::optional<std::uint8_t> respuesta = {};  // byte to send
};

// Of an exchange in which the logger's bytes are not examined: they pace what is sent.
enum class HitoEnvio : std::uint8_t {
    ninguno,
    fin,         // the last byte is the answer
    fueraDePaso  // a byte beyond the last: nothing to answer, the exchange is over
};

}  // namespace telvane
