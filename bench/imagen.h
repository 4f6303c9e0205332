// A full memory image of plausible weather.
#pragma once

#include "data/memoria.h"

namespace telvane::bench {

// Every slot of the logger's memory written, one record each 10 minutes from 2018-11-03 on.
Memoria imagenLlena();

}  // namespace telvane::bench
