// Archives of a fleet, one file a station, as each station's own machine would have them: samples every ten
// minutes, an image each time its memory is full, and how each was downloaded.
//   flota_bench FOLDER FIRST LAST SAMPLES      FIRST and LAST: numbers of stations
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "bench/registrador_que_graba.h"
#include "historico/archivo.h"
#include "historico/destino.h"

namespace telvane::bench {

namespace {

void llenar(const std::filesystem::path& archivo, std::size_t numero, std::size_t muestras) {
    Registrador registrador(std::to_string(10'000'000 + numero), static_cast<unsigned>(numero + 1));
    const auto almacen = abrirAlmacen(archivo, Uso::incorporar, std::chrono::seconds(10), [] {});
    for (std::size_t hechas = 0; hechas < muestras;) {
        const auto cuantas = std::min(kRanurasDeMuestras, muestras - hechas);
        const auto& imagen = registrador.tomar(cuantas);
        hechas += cuantas;
        const std::chrono::sys_seconds ahora(std::chrono::sys_days(std::chrono::year{2002} / 1 / 1) +
                                             std::chrono::minutes(10 * hechas));
        Archivo(*almacen).incorporar(imagen, {},
                                     {.origen = "flota",
                                      .incorporada = ahora,
                                      .descarga = FichaDescarga{.descargada = ahora,
                                                                .puerto = 1,
                                                                .dispositivo = "/dev/ttyUSB0",
                                                                .desfase = static_cast<int>(numero % 90)}});
    }
}

}  // namespace

}  // namespace telvane::bench

int main(int argc, char** argv) {
    if (argc != 5) {
        std::fprintf(stderr, "flota_bench CARPETA PRIMERA ULTIMA MUESTRAS\n");
        return 2;
    }
    const std::filesystem::path carpeta = argv[1];
    for (auto i = std::strtoull(argv[2], nullptr, 10); i <= std::strtoull(argv[3], nullptr, 10); ++i)
        telvane::bench::llenar(carpeta / (std::to_string(i) + ".sqlite"), i,
                               std::strtoull(argv[4], nullptr, 10));
    return 0;
}
