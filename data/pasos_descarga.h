// The memory download, event by event: two handshake bytes, then 4096 blocks. No I/O, no form.
#pragma once

#include <cstddef>
#include <cstdint>

#include "link/paso.h"

namespace telvane {

enum class HitoDescarga : std::uint8_t {
    saludo,    // first reply was right
    comienzo,  // second reply was right: whole blocks follow
    bloque,    // the byte is the first of a block: its end (finDeBloque) is answered, not its beginning
    error      // wrong reply, a byte left over behind a block, or an event beyond the expected count
};

// contador: 1 for the first event; ultimoBloque: its end value (2 replies and 4096 blocks).
// byte: the first byte of the event.
Paso<HitoDescarga> pasoDescarga(std::int32_t contador, std::int32_t ultimoBloque, std::uint8_t byte);

// A block's 64 bytes were taken; sobran: how many wait behind them. The line carries no checksum: a byte left
// over is the only sign that something went wrong.
Paso<HitoDescarga> finDeBloque(std::size_t sobran);

}  // namespace telvane
