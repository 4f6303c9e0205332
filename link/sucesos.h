// What the probe's channel says on the form's surface: the logger's answer, line events and errors.
#pragma once

#include <string_view>

#include "link/enlace.h"

namespace telvane {

// The line printed for an event or error of the channel; empty for those that print nothing (1) or have a
// rule of their own (2).
std::string_view textoDeSuceso(int codigo);

// Communication event of MSComm1: more than 20 bytes waiting are the logger's answer, whatever they say.
void alComunicarSonda(Enlace& enlace);

}  // namespace telvane
