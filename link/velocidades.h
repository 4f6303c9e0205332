// The line speeds that the system has a name for.
#pragma once

#include <termios.h>

#include <array>
#include <optional>

namespace telvane {

struct Velocidad {
    int baudios;
    speed_t codigo;
};
inline constexpr std::array<Velocidad, 14> kVelocidades = {{{110, B110},
                                                            {300, B300},
                                                            {600, B600},
                                                            {1200, B1200},
                                                            {2400, B2400},
                                                            {4800, B4800},
                                                            {9600, B9600},
                                                            {19200, B19200},
                                                            {38400, B38400},
                                                            {57600, B57600},
                                                            {115200, B115200},
                                                            {230400, B230400},
                                                            {460800, B460800},
                                                            {921600, B921600}}};

// nullopt: no such speed.
constexpr std::optional<speed_t> codigoDeVelocidad(int baudios) {
    for (const auto& velocidad : kVelocidades) {
        if (velocidad.baudios == baudios) return velocidad.codigo;
    }
    return std::nullopt;
}

}  // namespace telvane
