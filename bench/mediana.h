// The middle one of some measurements, which one bad moment of the machine does not move.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace telvane::bench {

// medidas: at least one.
inline double mediana(std::vector<double> medidas) {
    const auto medio = medidas.begin() + static_cast<std::ptrdiff_t>(medidas.size() / 2);
    std::nth_element(medidas.begin(), medio, medidas.end());
    return *medio;
}

}  // namespace telvane::bench
