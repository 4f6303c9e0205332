// A length of time as the system's calls take it.
#pragma once

#include <time.h>

#include <chrono>

namespace telvane {

inline timespec comoTimespec(std::chrono::nanoseconds duracion) {
    const auto segundos = std::chrono::floor<std::chrono::seconds>(duracion);
    return {static_cast<time_t>(segundos.count()), static_cast<long>((duracion - segundos).count())};
}

}  // namespace telvane
