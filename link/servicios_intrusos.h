// Services of a common desktop that take serial adapters for something else.
#pragma once

#include <vector>

#include "link/mapa_com.h"

namespace telvane {

enum class ServicioIntruso {
    modem,    // ModemManager: asks each new adapter for some seconds whether it is a modem
    braille,  // brltty: takes common adapters away from the system, whose device then vanishes
};

// Those that run, each once. Anybody may see them, while the descriptors of another user's process stay
// hidden.
std::vector<ServicioIntruso> serviciosIntrusos(const RaicesSistema& raices = {});

}  // namespace telvane
