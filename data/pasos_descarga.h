// The memory download, event by event: two handshake bytes, then 4096 blocks. No I/O, no form.
#pragma once

#include <cstdint>
#include <optional>

namespace telvane {

enum class HitoDescarga : std::uint8_t {
    saludo,    // first reply was right
    comienzo,  // second reply was right: whole blocks follow
    bloque,    // the byte is the first of a block; read the rest and acknowledge it if nothing is left over
    error      // wrong reply, or an event beyond the expected count
};

struct PasoDescarga {
    HitoDescarga hito = HitoDescarga::error;
    std::optional<std::uint8_t> respuesta;  // byte to send at once
};

// contador: 1 for the first event; ultimoBloque: its end value (2 replies and 4096 blocks).
// byte: the first byte of the event.
PasoDescarga pasoDescarga(std::int32_t contador, std::int32_t ultimoBloque, std::uint8_t byte);

}  // namespace telvane
