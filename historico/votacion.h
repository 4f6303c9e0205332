// Which records of a stamp in conflict count.
#pragma once

#include <cstddef>
#include <vector>

#include "data/muestra.h"
#include "historico/huella.h"
#include "serie_temporal/instante.h"

namespace telvane {

// That an image holds a record in a slot.
struct Testigo {
    Instante instante{};
    BytesMuestra registro{};
    std::size_t ranura = 0;
    Huella imagen{};
    // False: a partial image that a whole one contains has no vote.
    bool vota = true;
};

struct Veredicto {
    BytesMuestra registro{};
    bool cuenta = true;
};

// testigos: all there is of one stamp, in any order. Where two images hold different records in one slot, the
// line spoilt one of them: records that are joined through shared slots form a group, and of a group counts
// the one that most images hold, in any slot; of equals the smaller one. Records in slots of their own come
// from a clock that was set back: all count. In the order of the records.
std::vector<Veredicto> votar(const std::vector<Testigo>& testigos);

}  // namespace telvane
