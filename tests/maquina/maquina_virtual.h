// A machine with a kernel of the distribution, our programs, and two 16550 ports: the first is its console,
// the second the logger's line.
#pragma once

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/apoyo/carpeta_temporal.h"
#include "tests/apoyo/proceso.h"

namespace telvane {

class MaquinaVirtual {
   public:
    // What is missing on this machine to run one; empty: nothing.
    static std::string queFalta();

    // Boots. programas lie in /bin there; ordenes are lines for its shell, run one after the other, after
    // which the machine switches itself off. linea: the socket on which the line's other end listens. Throws
    // std::runtime_error.
    MaquinaVirtual(const std::vector<std::filesystem::path>& programas,
                   const std::vector<std::string>& ordenes, const std::filesystem::path& linea);

    // The next line that the machine writes on its console; nullopt when it is off.
    std::optional<std::string> linea();
    // All lines from here to the end.
    std::string resto();
    // Holds the logger's side of the line for a moment in the state that no byte has.
    void cortarLinea();

   private:
    // It emulates its processor on one that others use as well.
    static constexpr std::chrono::seconds kPlazo{250};
    std::filesystem::path prepararDisco(const std::vector<std::filesystem::path>& programas,
                                        const std::vector<std::string>& ordenes) const;

    CarpetaTemporal carpeta_;
    std::filesystem::path mando_;
    std::unique_ptr<Proceso> emulador_;
};

// SHA-256 of a file, in hexadecimal, as the machine's own tool tells it.
std::string huella(const std::filesystem::path& ruta);

}  // namespace telvane
