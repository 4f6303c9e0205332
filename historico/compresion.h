// Images as they are kept: packed, most of them as what is new against an earlier one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <vector>

namespace telvane {

// What is kept is not what was packed. The text, in Spanish, says what is wrong.
class ErrorCompresion : public std::runtime_error {
   public:
    using std::runtime_error::runtime_error;
};

// base: what the unpacking will have at hand; empty: nothing.
std::vector<std::uint8_t> comprimir(std::span<const std::uint8_t> bytes,
                                    std::span<const std::uint8_t> base = {});
// bytes: how many come out. base: the same that was given to the packing. Throws ErrorCompresion.
std::vector<std::uint8_t> descomprimir(std::span<const std::uint8_t> datos, std::size_t bytes,
                                       std::span<const std::uint8_t> base = {});

}  // namespace telvane
