// Whole processes, timed one at a time.
#pragma once

#include <sys/resource.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "tests/apoyo/proceso.h"

namespace telvane::bench {

inline double segundosDesde(std::chrono::steady_clock::time_point inicio) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - inicio).count();
}

// Seconds that the command took. One that fails ends the benchmark.
inline double correr(const std::vector<std::string>& orden) {
    constexpr std::chrono::minutes kPlazo{10};
    const auto inicio = std::chrono::steady_clock::now();
    Proceso proceso(orden);
    if (proceso.terminar(kPlazo) != 0) {
        std::fprintf(stderr, "%s: %s\n", orden.front().c_str(), proceso.errores().c_str());
        std::exit(1);
    }
    return segundosDesde(inicio);
}

// Of the largest program so far.
inline double picoMiB() {
    rusage uso{};
    ::getrusage(RUSAGE_CHILDREN, &uso);
    return static_cast<double>(uso.ru_maxrss) / 1024;
}

}  // namespace telvane::bench
