// Whose configuration an exported file tells, and whether it has the evaporation columns.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace telvane {

// A logger that was read; without text none was.
struct LoggerLeido {
    std::string texto;  // its configuration text
    float numeroSerie = 0;
};

struct ConfigDeArchivo {
    std::string texto;
    bool evaporacion = false;
};

// Those of the logger that was read; otherwise what the image says in its own header.
ConfigDeArchivo configDeArchivo(std::span<const std::uint8_t> imagen, const LoggerLeido& leido);

}  // namespace telvane
