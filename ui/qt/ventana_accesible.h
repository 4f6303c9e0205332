// What assistive technology takes a window of the program for.
#pragma once

namespace telvane {

// Plain windows are told as windows, not as one more filling between widgets; more than once does no harm.
void instalarAccesibilidadDeVentanas();

}  // namespace telvane
