// The report as a process: a memory image against a script with pandas and matplotlib (where these are), five
// million samples of an archive against a bare loop that reads them, the memory it needs of more and more of
// them, and the page drawn in a real browser (where one is) against an empty one. Everything lies in memory
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
#include "tests/navegador/navegador.h"

namespace telvane::bench {

namespace {

namespace fs = std::filesystem;
using Reloj = std::chrono::steady_clock;

constexpr int kRondas = 5;
constexpr std::size_t kEnUnaImagen = 8178;
const std::string kEstacion = "02080050";

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

// As many as are missing from the first number to the second.
void llenar(const std::string& destino, std::size_t desde, std::size_t hasta) {
    const auto almacen = abrirAlmacen(destino, Uso::incorporar, std::chrono::seconds(10), [] {});
    Archivo archivo(*almacen);
    for (auto n = (desde + kEnUnaImagen - 1) / kEnUnaImagen; n * kEnUnaImagen < hasta; ++n)
        archivo.incorporar(imagen(n), {}, {});
}

// How whoever has no report reads the samples: row by row off the table, or off the images, which is the
// quickest way there is.
enum class Modo { filas, imagenes };

double leerSinMas(const std::string& destino, Modo modo, std::size_t& leidas) {
    const auto inicio = Reloj::now();
    const auto almacen = abrirAlmacen(destino, Uso::leer, std::chrono::seconds(10), [] {});
    Lectura lectura(*almacen);
    const auto estacion = lectura.estacion(kEstacion);
    std::int64_t suma = 0;
    leidas = 0;
    const auto contar = [&](const auto& m) {
        suma += medidas(m.registro).temperatura;
        ++leidas;
    };
    if (modo == Modo::filas) almacen->filas(estacion.id, kPrimerMomento, kUltimoMomento, contar);
    if (modo == Modo::imagenes) lectura.recorrer(estacion, {}, Cuales::lasQueCuentan, contar);
    const auto tiempo = segundosDesde(inicio);
    std::printf("%s", suma == 1 ? " " : "");
    return tiempo;
}

void medirImagen(const fs::path& carpeta, const fs::path& guiones) {
    const auto archivo = memoriaSimulada(Clima(1));
    std::ofstream(carpeta / "a.rgt", std::ios::binary)
        .write(reinterpret_cast<const char*>(archivo.data()), static_cast<std::streamsize>(archivo.size()));
    const auto pagina = (carpeta / "a.html").string();
    correr({TELVANE_CLI, "convertir", "--perfil", "ampliado", (carpeta / "a.rgt").string(),
            (carpeta / "a.csv").string()});
    const bool conPandas = std::system("/usr/bin/python3 -c 'import pandas, matplotlib' 2>/dev/null") == 0;
    std::vector<double> nuestros;
    std::vector<double> suyos;
    for (int i = 0; i < kRondas; ++i) {
        nuestros.push_back(correr({TELVANE_HISTORICO, "informe", pagina, "--imagen",
                                   (carpeta / "a.rgt").string(), "--sin-guiones"}));
        if (conPandas)
            suyos.push_back(correr({"/usr/bin/python3", (guiones / "informe_mes.py").string(),
                                    (carpeta / "a.csv").string(), (carpeta / "p.html").string()}));
    }
    std::printf("8178 muestras: %.1f ms, %ju bytes sin guiones (meta < 400000)\n", mediana(nuestros) * 1000,
                static_cast<std::uintmax_t>(fs::file_size(pagina)));
    if (!conPandas) {
        std::printf("sin pandas o matplotlib: no se compara\n");
        return;
    }
    std::printf("pandas y matplotlib: %.0f ms; razón 1/%.0f (meta <= 1/30)\n", mediana(suyos) * 1000,
                mediana(suyos) / mediana(nuestros));
}

// The archive grows; whatever it holds, the report needs as much memory and no more.
void medirArchivo(const fs::path& carpeta, std::size_t muestras) {
    const auto destino = (carpeta / "h.sqlite").string();
    const auto pagina = (carpeta / "h.html").string();
    const auto informar = [&] {
        return correr({TELVANE_HISTORICO, "--en", destino, "informe", pagina, "--estacion", kEstacion});
    };
    std::size_t hechas = 0;
    for (const auto parte : {muestras / 10, muestras / 5, muestras}) {
        llenar(destino, hechas, parte);
        hechas = parte;
        informar();
        std::printf("%zu muestras: pico %.1f MiB\n", parte, picoMiB());
    }
    std::size_t leidas = 0;
    std::vector<double> filas;
    std::vector<double> imagenes;
    std::vector<double> informes;
    for (int i = 0; i < kRondas; ++i) {
        filas.push_back(leerSinMas(destino, Modo::filas, leidas));
        imagenes.push_back(leerSinMas(destino, Modo::imagenes, leidas));
        informes.push_back(informar());
    }
    const auto nuestro = mediana(informes);
    std::printf("%zu muestras: informe %.2f s; leer las filas %.2f s, razón %.2f (meta <= 1.3)\n", leidas,
                nuestro, mediana(filas), nuestro / mediana(filas));
    std::printf("leerlas de las imágenes, como el informe: %.2f s, razón %.2f\n", mediana(imagenes),
                nuestro / mediana(imagenes));
    std::printf("%ju bytes (meta < 1000000)\n", static_cast<std::uintmax_t>(fs::file_size(pagina)));
}

// From the order to open the page until its second frame after loading, less the same of an empty page.
void medirNavegador(const fs::path& carpeta) {
    const std::string programa = PROGRAMA_CHROMIUM;
    if (programa.empty()) {
        std::printf("sin chromium: no se mide el navegador\n");
        return;
    }
    correr({TELVANE_HISTORICO, "informe", (carpeta / "a.html").string(), "--imagen",
            (carpeta / "a.rgt").string()});
    std::ofstream(carpeta / "vacia.html") << "<!DOCTYPE html><title>vacia</title><p>vacia";
    Navegador navegador(programa, {});
    const auto abrir = [&](const char* pagina) {
        const auto inicio = Reloj::now();
        navegador.abrir(carpeta / pagina);
        navegador.valor("new Promise(l => requestAnimationFrame(() => requestAnimationFrame(() => l(1))))");
        return segundosDesde(inicio);
    };
    abrir("vacia.html");
    std::vector<double> vacia;
    std::vector<double> imagenEntera;
    std::vector<double> archivo;
    for (int i = 0; i < 2 * kRondas; ++i) {
        vacia.push_back(abrir("vacia.html"));
        imagenEntera.push_back(abrir("a.html"));
        archivo.push_back(abrir("h.html"));
    }
    const auto nada = mediana(vacia);
    std::printf(
        "dibujada en el navegador: 8178 muestras, %.2f s más que una página vacía (%.2f s; meta < 0.5 s)\n",
        mediana(imagenEntera) - nada, nada);
    std::printf("el archivo entero: %.2f s más\n", mediana(archivo) - nada);
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
    // First what tells its largest memory: a script's would hide ours.
    medirArchivo(carpeta, argc > 2 ? std::strtoul(argv[2], nullptr, 10) : 5'000'000);
    medirImagen(carpeta, argv[1]);
    medirNavegador(carpeta);
    std::filesystem::remove_all(carpeta);
    return 0;
}
