// Round numbers and moments along the axes of a chart.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "informe/periodo.h"

namespace telvane::informe {

// In whole numbers of the value's last decimal.
struct Escala {
    std::int64_t desde = 0;
    std::int64_t hasta = 1;
    std::int64_t paso = 1;

    // From the axis' top, 0, to its bottom, alto.
    std::int64_t lugar(std::int64_t valor, std::int64_t alto) const;
    int divisiones() const { return static_cast<int>((hasta - desde) / paso); }
};
// Holds both values; two to five divisions of 1, 2 or 5. A single value but 0 in its middle.
Escala escalaPara(std::int64_t minimo, std::int64_t maximo);

struct MarcaDeTiempo {
    Instante momento{};
    std::string texto;
    bool menor = false;  // may be left out where there is no room
};
std::vector<MarcaDeTiempo> marcasDeTiempo(const Plazo& plazo);

}  // namespace telvane::informe
