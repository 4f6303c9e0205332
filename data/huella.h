// By which a memory image is known: the SHA-256 of its bytes.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>

namespace telvane {

using Huella = std::array<std::uint8_t, 32>;

Huella huellaDe(std::span<const std::uint8_t> bytes);

// 64 digits, small letters.
std::string textoDe(const Huella& huella);

}  // namespace telvane
