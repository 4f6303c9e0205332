// Gaps among stamps, and how many a change of the set makes or fills.
#pragma once

#include <cstdint>
#include <vector>

#include "serie_temporal/instante.h"

namespace telvane {

// Gaps at stamps from desde to hasta, both included. sellos: distinct, in order, with the ten before desde
// and after hasta where there are as many.
std::int64_t contarHuecos(const std::vector<Instante>& sellos, Instante desde, Instante hasta);

// The stamps around those that are new, as far as these can change what is a gap.
inline constexpr std::size_t kSellosAlrededor = 21;
struct SellosAlrededor {
    std::vector<Instante> antes;    // up to kSellosAlrededor before the first new one, in order
    std::vector<Instante> medio;    // those that were there from the first to the last new one, in order
    std::vector<Instante> despues;  // up to kSellosAlrededor after the last new one, in order
};
// By how much the number of gaps grows. nuevos: in order, none of them among the others.
std::int64_t huecosDeMas(const SellosAlrededor& entorno, const std::vector<Instante>& nuevos);

}  // namespace telvane
