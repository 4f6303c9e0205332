// The report as a process: a memory image against a script with pandas and matplotlib (where these are), and
// five million samples of an archive against a bare loop that reads them. Everything lies in memory
// (/dev/shm).
//   informe_bench FOLDER_OF_THE_SCRIPTS [SAMPLES]
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "bench/corrida.h"
#include "bench/mediana.h"
#include "data/medidas.h"
#include "historico/archivo.h"
#include "historico/destino.h"
#include "historico/lectura.h"
#include "simulator/memoria_simulada.h"

namespace telvane::bench {

namespace {

namespace fs = std::filesystem;
using Reloj = std::chrono::steady_clock;

constexpr int kRondas = 5;
constexpr std::size_t kEnUnaImagen = 8178;

// One sample a minute, image after image without overlap.
std::vector<std::uint8_t> imagen(std::size_t numero) {
    static const Clima kClima(1);
    auto bytes = memoriaVacia({}, {});
    const auto inicio = SegundosCiviles(instante({.anio = 2010, .mes = 1, .dia = 1}).time_since_epoch());
    for (std::size_t i = 0; i < kEnUnaImagen; ++i) {
        const auto momento = inicio + std::chrono::minutes(numero * kEnUnaImagen + i);
        const auto registro = registroDeMuestra(kClima.en(momento), fechaHoraDe(momento));
        std::copy(registro.begin(), registro.end(),
                  bytes.begin() + static_cast<std::ptrdiff_t>(kInicioRegistros + i * registro.size()));
    }
    return bytes;
}

void llenar(const std::string& destino, std::size_t muestras) {
    const auto almacen = abrirAlmacen(destino, Uso::incorporar, std::chrono::seconds(10), [] {});
    Archivo archivo(*almacen);
    for (std::size_t n = 0; n * kEnUnaImagen < muestras; ++n) archivo.incorporar(imagen(n), {}, {});
}

double leerSinMas(const std::string& destino, std::size_t& leidas) {
    const auto inicio = Reloj::now();
    const auto almacen = abrirAlmacen(destino, Uso::leer, std::chrono::seconds(10), [] {});
    Lectura lectura(*almacen);
    std::int64_t suma = 0;
    leidas = 0;
    lectura.recorrer(lectura.estacion("02080050"), {}, Cuales::lasQueCuentan, [&](const MuestraArchivada& m) {
        suma += medidas(m.registro).temperatura;
        ++leidas;
    });
    const auto tiempo = segundosDesde(inicio);
    std::printf("%s", suma == 1 ? " " : "");
    return tiempo;
}

void medirImagen(const fs::path& carpeta, const fs::path& guiones) {
    const auto archivo = memoriaSimulada(Clima(1));
    std::ofstream(carpeta / "a.rgt", std::ios::binary)
        .write(reinterpret_cast<const char*>(archivo.data()), static_cast<std::streamsize>(archivo.size()));
    const auto pagina = (carpeta / "a.html").string();
    std::vector<double> tiempos;
    for (int i = 0; i < kRondas; ++i)
        tiempos.push_back(correr({TELVANE_HISTORICO, "informe", pagina, "--imagen",
                                  (carpeta / "a.rgt").string(), "--sin-guiones"}));
    const auto nuestro = mediana(tiempos);
    std::printf("8178 muestras: %.1f ms, %ju bytes sin guiones (meta < 400000), pico %.1f MiB\n",
                nuestro * 1000, static_cast<std::uintmax_t>(fs::file_size(pagina)), picoMiB());
    if (std::system("/usr/bin/python3 -c 'import pandas, matplotlib' 2>/dev/null") != 0) {
        std::printf("sin pandas o matplotlib: no se compara\n");
        return;
    }
    correr({TELVANE_CLI, "convertir", "--perfil", "ampliado", (carpeta / "a.rgt").string(),
            (carpeta / "a.csv").string()});
    const auto suyo = correr({"/usr/bin/python3", (guiones / "informe_mes.py").string(),
                              (carpeta / "a.csv").string(), (carpeta / "p.html").string()});
    std::printf("pandas y matplotlib: %.0f ms; razón 1/%.0f (meta <= 1/30)\n", suyo * 1000, suyo / nuestro);
}

void medirArchivo(const fs::path& carpeta, std::size_t muestras) {
    const auto destino = (carpeta / "h.sqlite").string();
    const auto pagina = (carpeta / "h.html").string();
    llenar(destino, muestras);
    std::size_t leidas = 0;
    std::vector<double> lecturas;
    std::vector<double> informes;
    for (int i = 0; i < kRondas; ++i) {
        lecturas.push_back(leerSinMas(destino, leidas));
        informes.push_back(
            correr({TELVANE_HISTORICO, "--en", destino, "informe", pagina, "--estacion", "02080050"}));
    }
    std::printf("%zu muestras: informe %.2f s, leer sin más %.2f s; razón %.2f (meta <= 1.3)\n", leidas,
                mediana(informes), mediana(lecturas), mediana(informes) / mediana(lecturas));
    std::printf("%ju bytes (meta < 1000000), pico %.1f MiB\n",
                static_cast<std::uintmax_t>(fs::file_size(pagina)), picoMiB());
}

}  // namespace

}  // namespace telvane::bench

int main(int argc, char** argv) {
    using namespace telvane::bench;
    if (argc < 2) {
        std::fprintf(stderr, "informe_bench CARPETA_DE_LOS_GUIONES [MUESTRAS]\n");
        return 2;
    }
    const auto carpeta = std::filesystem::path("/dev/shm") / ("informe_bench." + std::to_string(::getpid()));
    std::filesystem::create_directories(carpeta);
    medirImagen(carpeta, argv[1]);
    medirArchivo(carpeta, argc > 2 ? std::strtoul(argv[2], nullptr, 10) : 5'000'000);
    std::filesystem::remove_all(carpeta);
    return 0;
}
