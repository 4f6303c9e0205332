// What assistive technology reads in a line view.
#pragma once

namespace telvane {

// Makes the toolkit ask us for the accessible side of every line view; more than once does no harm.
void instalarAccesibilidadDeVistas();

}  // namespace telvane
