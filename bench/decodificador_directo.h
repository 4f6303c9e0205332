// The tightest decoder we know to write: the yardstick of the real one.
#pragma once

#include <cstddef>
#include <cstdint>

namespace telvane::bench {

// Decodes blocks 0 to ultimoBloque at bloques, in the strict profile and the plain variant, registroValido
// true at the start, and writes the lines of blocks 6 and up to destino, which must have room for all. Gives
// their length.
std::size_t decodificarDirecto(const std::uint8_t* bloques, std::int32_t ultimoBloque, char* destino);

}  // namespace telvane::bench
