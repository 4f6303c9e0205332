// What stands on an X display, pixel by pixel.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace telvane {

// 0xRRGGBB at this place of the display (":7"); nullopt beyond its edges or without it.
std::optional<std::uint32_t> colorEnPantalla(const std::string& pantalla, int x, int y);

}  // namespace telvane
