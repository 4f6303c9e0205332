// The logger's two-byte quantities: high byte first.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace telvane {

constexpr std::uint16_t crudoDeDosBytes(std::span<const std::uint8_t> bytes, std::size_t lugar) {
    return static_cast<std::uint16_t>(bytes[lugar] << 8 | bytes[lugar + 1]);
}
constexpr void ponerDosBytes(std::span<std::uint8_t> bytes, std::size_t lugar, std::uint16_t valor) {
    bytes[lugar] = static_cast<std::uint8_t>(valor >> 8);
    bytes[lugar + 1] = static_cast<std::uint8_t>(valor & 0xFF);
}

}  // namespace telvane
