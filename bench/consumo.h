// Processor time and memory of this process.
#pragma once

#include <sys/resource.h>

namespace telvane::bench {

inline double segundosDeProcesador() {
    rusage uso{};
    ::getrusage(RUSAGE_SELF, &uso);
    const auto segundos = [](const timeval& t) {
        return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_usec) / 1e6;
    };
    return segundos(uso.ru_utime) + segundos(uso.ru_stime);
}

// Most memory held so far, in MiB.
inline double picoDeMemoria() {
    rusage uso{};
    ::getrusage(RUSAGE_SELF, &uso);
    return static_cast<double>(uso.ru_maxrss) / 1024.0;
}

}  // namespace telvane::bench
