// Whether two readings of one memory say the same: the line has no checksum.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace telvane {

// The first block in which two images of one logger contradict each other, as far as both reach. No
// contradiction are samples in the place of erased records, and the parts of the header that change by
// themselves. Both may begin behind an image's first byte, with a record.
std::optional<std::size_t> primeraDiferencia(std::span<const std::uint8_t> antes,
                                             std::span<const std::uint8_t> ahora, std::size_t inicio = 0);

// Whether the parts of the header that a logger may change by itself speak for a good reading of both whole
// images: the reserved bytes are the same, and the clock, a number of its own to the archive, stands still or
// has gone on by what passed between the beginnings of the two.
bool mismaCabecera(std::span<const std::uint8_t> antes, std::span<const std::uint8_t> ahora,
                   std::chrono::nanoseconds transcurrido);

}  // namespace telvane
