// What the warnings look at, read from an archive.
#pragma once

#include <vector>

#include "historico/avisos.h"
#include "historico/lectura.h"

namespace telvane {

// Of every station, by name.
std::vector<Observada> observar(Lectura& lectura, Incorporada ahora);

// How many images of each the other archive lacks, written into them.
void compararCon(std::vector<Observada>& flota, Lectura& lectura, Lectura& otra);

}  // namespace telvane
