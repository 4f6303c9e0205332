// Start-up to the first frame, process start included: the window against an empty form with as many
// controls. Needs a display (xvfb-run will do); the two programs take turns, and each run is compared with
// the one before it, so that what else the machine does falls on both.
#include <sys/resource.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/ajustes.h"
#include "bench/mediana.h"
#include "tests/apoyo/carpeta_temporal.h"
#include "tests/apoyo/proceso.h"

namespace telvane::bench {

namespace {

struct Arranque {
    double reloj;       // milliseconds
    double procesador;  // milliseconds
};

// Of the programs that have ended so far.
double procesadorGastado() {
    rusage uso{};
    ::getrusage(RUSAGE_CHILDREN, &uso);
    const auto ms = [](const timeval& t) {
        return 1e3 * static_cast<double>(t.tv_sec) + 1e-3 * static_cast<double>(t.tv_usec);
    };
    return ms(uso.ru_utime) + ms(uso.ru_stime);
}

Arranque medirUno(const std::vector<std::string>& orden, const std::filesystem::path& carpeta) {
    const auto antes = procesadorGastado();
    const auto inicio = std::chrono::steady_clock::now();
    Proceso programa(orden, {"XDG_CONFIG_HOME=" + carpeta.string(), "XDG_DATA_HOME=" + carpeta.string()});
    if (programa.terminar() != 0) throw std::runtime_error(orden.front() + ": " + programa.errores());
    return {std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - inicio).count(),
            procesadorGastado() - antes};
}

void informar(const char* que, const std::vector<Arranque>& telvane, const std::vector<Arranque>& vacia,
              double Arranque::*cual) {
    std::vector<double> de;
    std::vector<double> del;
    std::vector<double> razones;
    for (std::size_t i = 0; i < telvane.size(); ++i) {
        de.push_back(telvane[i].*cual);
        del.push_back(vacia[i].*cual);
        razones.push_back(de.back() / del.back());
    }
    std::printf("%s: empty form %.1f ms, window %.1f ms, window / empty form = %.2f  (goal 1.10)\n", que,
                mediana(del), mediana(de), mediana(razones));
}

int medir(const std::filesystem::path& programas) {
    constexpr int kRondas = 41;
    const CarpetaTemporal carpeta;
    escribirAjustes(carpeta.ruta());
    const std::vector<std::string> telvane = {programas / "arranque_telvane", "--com", "1=/dev/null"};
    const std::vector<std::string> vacia = {programas / "arranque_vacia"};
    std::vector<Arranque> deTelvane;
    std::vector<Arranque> deVacia;
    for (int ronda = 0; ronda < kRondas; ++ronda) {
        deVacia.push_back(medirUno(vacia, carpeta.ruta()));
        deTelvane.push_back(medirUno(telvane, carpeta.ruta()));
    }
    informar("wall clock", deTelvane, deVacia, &Arranque::reloj);
    informar("processor", deTelvane, deVacia, &Arranque::procesador);
    return 0;
}

}  // namespace

}  // namespace telvane::bench

int main(int, char** argv) {
    return telvane::bench::medir(std::filesystem::canonical(argv[0]).parent_path());
}
