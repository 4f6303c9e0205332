// One sample of a station in the order of time.
#pragma once

#include "data/medidas.h"
#include "serie_temporal/instante.h"

namespace telvane {

struct Observacion {
    Instante instante{};
    Medidas medidas;
    // Its stamp has more than one distinct record.
    bool conflicto = false;
};

}  // namespace telvane
