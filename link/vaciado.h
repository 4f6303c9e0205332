// Dropping what waits at a descriptor of a port.
#pragma once

namespace telvane {

// Without waiting for more; ends where the line never falls silent.
void vaciar(int descriptor);

}  // namespace telvane
