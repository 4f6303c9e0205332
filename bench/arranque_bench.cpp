// Start-up to the first frame, process start included: the window against an empty form with as many
// controls. Needs a display (xvfb-run will do); the two programs take turns.
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "apoyo/carpeta_temporal.h"
#include "apoyo/proceso.h"
#include "bench/ajustes.h"
#include "bench/mediana.h"

namespace telvane::bench {

namespace {

double milisegundos(const std::vector<std::string>& orden, const std::filesystem::path& carpeta) {
    const auto inicio = std::chrono::steady_clock::now();
    Proceso programa(orden, {"XDG_CONFIG_HOME=" + carpeta.string(), "XDG_DATA_HOME=" + carpeta.string()});
    if (programa.terminar() != 0) throw std::runtime_error(orden.front() + ": " + programa.errores());
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - inicio).count();
}

int medir(const std::filesystem::path& programas) {
    constexpr int kRondas = 41;
    const CarpetaTemporal carpeta;
    escribirAjustes(carpeta.ruta());
    const std::vector<std::string> telvane = {programas / "arranque_telvane", "--com", "1=/dev/null"};
    const std::vector<std::string> vacia = {programas / "arranque_vacia"};
    std::vector<double> deTelvane;
    std::vector<double> deVacia;
    for (int ronda = 0; ronda < kRondas; ++ronda) {
        deTelvane.push_back(milisegundos(telvane, carpeta.ruta()));
        deVacia.push_back(milisegundos(vacia, carpeta.ruta()));
    }
    std::printf("empty form %.1f ms, window %.1f ms\n", mediana(deVacia), mediana(deTelvane));
    std::printf("window / empty form = %.2f  (goal 1.10)\n", mediana(deTelvane) / mediana(deVacia));
    return 0;
}

}  // namespace

}  // namespace telvane::bench

int main(int, char** argv) {
    return telvane::bench::medir(std::filesystem::canonical(argv[0]).parent_path());
}
