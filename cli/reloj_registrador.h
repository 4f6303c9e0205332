// Arithmetic with the logger's clock.
#pragma once

#include <chrono>

#include "platform/reloj.h"

namespace telvane {

// How far its clock may be, the time in between allowed for, from one that was read before or that was sent.
inline constexpr std::chrono::seconds kToleranciaReloj{5};

// The wall's time some duration later, or earlier for a negative one, across midnight and the end of the
// year.
FechaHora masTarde(const FechaHora& momento, std::chrono::nanoseconds cuanto);

// How much later a is than b; negative: earlier.
std::chrono::nanoseconds adelanto(const FechaHora& a, const FechaHora& b);
// How far two clocks are apart.
std::chrono::nanoseconds distancia(const FechaHora& a, const FechaHora& b);

}  // namespace telvane
