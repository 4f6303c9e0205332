// telvane-historico as a process on five million samples of a hundred stations: a night's image and a fresh
// one against the tightest program and scripts, a million samples exported against the decoder's own writing,
// estado, bytes on disk, a thousand overlapping images, and a night's image into a server against COPY.
// Everything but the server lies in memory (/dev/shm), and the server syncs nothing, so that no disk is
// measured.
//   historico_bench FOLDER_OF_THE_SCRIPTS [exportar|noches]
#include <sqlite3.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "bench/corrida.h"
#include "bench/mediana.h"
#include "bench/registrador_que_graba.h"
#include "data/conversion.h"
#include "historico/archivo.h"
#include "historico/destino.h"
#include "tests/apoyo/carpeta_temporal.h"
#include "tests/historico/servidor_postgres.h"

namespace telvane::bench {

namespace {

namespace fs = std::filesystem;
using Reloj = std::chrono::steady_clock;
using Bytes = std::vector<std::uint8_t>;

constexpr int kRondas = 31;
constexpr int kRondasLargas = 5;
constexpr std::size_t kDeUnaNoche = 144;
constexpr std::size_t kImagenesDeLaGrande = 123;
constexpr std::size_t kOtrasEstaciones = 99;
constexpr std::size_t kImagenesDeOtra = 5;
const std::string kGrande = "02080050";

void guardar(const fs::path& ruta, const Bytes& bytes) {
    std::ofstream(ruta, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

std::int64_t filasEn(const fs::path& archivo) {
    sqlite3* base = nullptr;
    sqlite3_stmt* s = nullptr;
    std::int64_t cuantas = 0;
    if (sqlite3_open(archivo.c_str(), &base) == SQLITE_OK &&
        sqlite3_prepare_v2(base, "SELECT count(*) FROM muestras", -1, &s, nullptr) == SQLITE_OK &&
        sqlite3_step(s) == SQLITE_ROW) {
        cuantas = sqlite3_column_int64(s, 0);
    }
    sqlite3_finalize(s);
    sqlite3_close(base);
    return cuantas;
}

class Banco {
   public:
    Banco(fs::path carpeta, fs::path guiones) : carpeta_(std::move(carpeta)), guiones_(std::move(guiones)) {}

    void correrTodo() {
        llenar(kOtrasEstaciones);
        medirNoches();
        medirFresca();
        medirExportar();
        medirEstado();
        medirMil();
        medirPandas();
        medirServidor();
    }

    void correrExportar() {
        llenar(0);
        medirExportar();
    }
    void correrNoches() {
        llenar(kOtrasEstaciones);
        medirNoches();
    }

   private:
    std::string en(const std::string& nombre) const { return carpeta_ / nombre; }

    void llenar(std::size_t otrasEstaciones) {
        const auto inicio = Reloj::now();
        const auto almacen = abrirAlmacen(en("h.sqlite"), Uso::incorporar, std::chrono::seconds(10), [] {});
        Archivo archivo(*almacen);
        for (std::size_t i = 0; i < kImagenesDeLaGrande; ++i) {
            archivo.incorporar(grande_.tomar(kRanurasDeMuestras), {}, {});
        }
        for (std::size_t e = 0; e < otrasEstaciones; ++e) {
            Registrador otro(std::to_string(10'000'000 + e), static_cast<unsigned>(e + 2));
            for (std::size_t i = 0; i < kImagenesDeOtra; ++i) {
                archivo.incorporar(otro.tomar(kRanurasDeMuestras), {}, {});
            }
        }
        std::printf("lleno en %.0f s\n", segundosDesde(inicio));
    }

    // Each into an archive of its own, taking turns.
    void medirNoches() {
        const auto filas = filasEn(en("h.sqlite"));
        const auto bytes = fs::file_size(en("h.sqlite"));
        std::printf("%jd muestras de 100 estaciones: %.1f bytes cada una (meta <= 60)\n",
                    static_cast<std::intmax_t>(filas),
                    static_cast<double>(bytes) / static_cast<double>(filas));
        fs::copy_file(en("h.sqlite"), en("directo.sqlite"));
        fs::copy_file(en("h.sqlite"), en("guion.sqlite"));
        std::vector<double> nuestros, dentro, directos, guiones, arranques;
        for (int ronda = 0; ronda < kRondas; ++ronda) {
            guardar(en("noche.rgt"), grande_.tomar(kDeUnaNoche));
            nuestros.push_back(
                correr({TELVANE_HISTORICO, "--en", en("h.sqlite"), "incorporar", en("noche.rgt")}));
            directos.push_back(correr({HISTORICO_DIRECTO, en("directo.sqlite"), en("noche.rgt")}));
            guiones.push_back(correr(
                {"/usr/bin/python3", guiones_ / "incorporar.py", en("guion.sqlite"), en("noche.rgt")}));
            arranques.push_back(correr({TELVANE_HISTORICO, "--version"}));
        }
        const auto crecio = static_cast<double>(fs::file_size(en("h.sqlite")) - bytes) / kRondas / 1024;
        const auto crecioDirecto =
            static_cast<double>(fs::file_size(en("directo.sqlite")) - bytes) / kRondas / 1024;
        if (filasEn(en("h.sqlite")) != filasEn(en("directo.sqlite")) ||
            filasEn(en("h.sqlite")) != filasEn(en("guion.sqlite"))) {
            std::fprintf(stderr, "los tres no guardan lo mismo\n");
            std::exit(1);
        }
        decir("noche", nuestros, directos, guiones, "meta <= 1.2", "meta <= 1/10");
        const auto arranque = mediana(arranques);
        std::printf("noche sin el arranque (%.1f ms, --version): %.1f ms; razón %.2f con el directo entero\n",
                    arranque * 1e3, (mediana(nuestros) - arranque) * 1e3,
                    (mediana(nuestros) - arranque) / mediana(directos));
        std::printf("una noche crece %.1f KiB, sus muestras solas %.1f KiB (meta: 4 KiB más)\n", crecio,
                    crecioDirecto);
    }

    static void decir(const char* que, const std::vector<double>& nuestros,
                      const std::vector<double>& directos, const std::vector<double>& guiones,
                      const char* metaDirecto, const char* metaGuion) {
        const double n = mediana(nuestros), d = mediana(directos), g = mediana(guiones);
        std::printf("%s: %.1f ms; directo %.1f ms, razón %.2f (%s); guion %.1f ms, razón 1/%.1f (%s)\n", que,
                    n * 1e3, d * 1e3, n / d, metaDirecto, g * 1e3, g / n, metaGuion);
    }

    void medirFresca() {
        Registrador nuevo(kGrande, 7);
        guardar(en("fresca.rgt"), nuevo.tomar(kRanurasDeMuestras));
        std::vector<double> nuestros, directos;
        for (int ronda = 0; ronda < kRondas; ++ronda) {
            const auto f = en("f" + std::to_string(ronda)), d = en("d" + std::to_string(ronda));
            nuestros.push_back(correr({TELVANE_HISTORICO, "--en", f, "incorporar", en("fresca.rgt")}));
            directos.push_back(correr({HISTORICO_DIRECTO, d, en("fresca.rgt")}));
        }
        const double n = mediana(nuestros), d = mediana(directos);
        std::printf("fresca: %.1f ms; directo %.1f ms, razón %.2f (meta <= 1.5)\n", n * 1e3, d * 1e3, n / d);
    }

    // It takes more memory than any of ours, whose peak has been told by now.
    void medirPandas() {
        std::vector<double> nuestros, pandas;
        for (int ronda = 0; ronda < kRondasLargas; ++ronda) {
            const auto n = en("n" + std::to_string(ronda)), p = en("p" + std::to_string(ronda));
            nuestros.push_back(correr({TELVANE_HISTORICO, "--en", n, "incorporar", en("fresca.rgt")}));
            pandas.push_back(
                correr({"/usr/bin/python3", guiones_ / "incorporar_pandas.py", p, en("fresca.rgt")}));
        }
        const double n = mediana(nuestros), p = mediana(pandas);
        std::printf("fresca, pandas: %.0f ms, razón 1/%.0f (meta <= 1/15)\n", p * 1e3, p / n);
    }

    // The same number of lines, from images in memory.
    double escribirElDecodificador(std::size_t lineas, const Bytes& imagen) {
        const auto inicio = Reloj::now();
        Conversor conversor;
        std::ofstream salida(en("decodificador.csv"), std::ios::binary);
        for (std::size_t hechas = 0; hechas < lineas; hechas += kRanurasDeMuestras) {
            const auto archivo = conversor.convertir(imagen, Formato::csv, Perfil::ampliado, {});
            salida.write(archivo.bytes().data(), static_cast<std::streamsize>(archivo.bytes().size()));
        }
        salida.flush();
        return segundosDesde(inicio);
    }

    void medirExportar() {
        const auto lineas = kImagenesDeLaGrande * kRanurasDeMuestras + kRondas * kDeUnaNoche;
        std::vector<double> nuestros, suyos, conMarcas;
        for (int ronda = 0; ronda < kRondasLargas; ++ronda) {
            nuestros.push_back(correr({TELVANE_HISTORICO, "--en", en("h.sqlite"), "exportar", en("todo.csv"),
                                       "--estacion", kGrande}));
            suyos.push_back(escribirElDecodificador(lineas, grande_.tomar(0)));
            conMarcas.push_back(correr({TELVANE_HISTORICO, "--en", en("h.sqlite"), "exportar",
                                        en("calidad.csv"), "--estacion", kGrande, "--calidad"}));
        }
        const double conCalidad = mediana(conMarcas);
        const double n = mediana(nuestros), s = mediana(suyos);
        std::printf(
            "exportar %zu muestras: %.0f ms, decodificador %.0f ms, razón %.2f (meta <= 1.5); pico %.1f MiB; "
            "las marcas %.0f ms más, razón %.2f (meta <= 2)\n",
            lineas, n * 1e3, s * 1e3, n / s, picoMiB(), (conCalidad - n) * 1e3, (conCalidad - n) / n);
    }

    void medirEstado() {
        std::vector<double> tiempos;
        for (int ronda = 0; ronda < kRondas; ++ronda) {
            tiempos.push_back(correr({TELVANE_HISTORICO, "--en", en("h.sqlite"), "estado", "--json"}));
        }
        std::printf("estado: %.1f ms (meta < 50)\n", mediana(tiempos) * 1e3);
    }

    // Three years of nights.
    void medirMil() {
        constexpr std::size_t kImagenes = 1000;
        Registrador registrador(kGrande, 9);
        registrador.tomar(kRanurasDeMuestras - kDeUnaNoche);
        double segundos = 0;
        {
            const auto almacen =
                abrirAlmacen(en("mil.sqlite"), Uso::incorporar, std::chrono::seconds(10), [] {});
            Archivo archivo(*almacen);
            for (std::size_t i = 0; i < kImagenes; ++i) {
                const auto& imagen = registrador.tomar(kDeUnaNoche);
                const auto inicio = Reloj::now();
                archivo.incorporar(imagen, {}, {});
                segundos += segundosDesde(inicio);
            }
        }
        const auto filas = static_cast<double>(filasEn(en("mil.sqlite")));
        const auto bytes = static_cast<double>(fs::file_size(en("mil.sqlite")));
        std::printf(
            "mil imágenes que se solapan: %.1f s, %.1f MiB, %.1f bytes por muestra con sus imágenes\n",
            segundos, bytes / 1048576, bytes / filas);
    }

    // A million samples of one station there, each of the two with a data base of its own.
    static void medirServidor() {
        auto& servidor = ServidorPostgres::unico();
        const auto nuestra = servidor.baseVacia("nuestra");
        const auto suya = servidor.url("suya");
        Registrador registrador(kGrande, 11);
        {
            const auto almacen = abrirAlmacen(nuestra, Uso::incorporar, std::chrono::seconds(10), [] {});
            Archivo archivo(*almacen);
            for (std::size_t i = 0; i < kImagenesDeLaGrande; ++i) {
                archivo.incorporar(registrador.tomar(kRanurasDeMuestras), {}, {});
            }
        }
        servidor.ejecutar("postgres", "CREATE DATABASE suya TEMPLATE nuestra");
        const CarpetaTemporal carpeta;
        std::vector<double> nuestros, copias;
        for (int ronda = 0; ronda < kRondas; ++ronda) {
            guardar(carpeta / "noche.rgt", registrador.tomar(kDeUnaNoche));
            nuestros.push_back(
                correr({TELVANE_HISTORICO, "--en", nuestra, "incorporar", carpeta / "noche.rgt"}));
            copias.push_back(correr({HISTORICO_COPIA, suya, carpeta / "noche.rgt"}));
        }
        const double n = mediana(nuestros), c = mediana(copias);
        std::printf("noche, servidor: %.1f ms; COPY y ON CONFLICT %.1f ms, razón %.2f\n", n * 1e3, c * 1e3,
                    n / c);
        medirSinConectar(registrador, nuestra, suya, n, c);
    }

    // What a night costs beside connecting: that of many in one run, less that of one.
    static void medirSinConectar(Registrador& registrador, const std::string& nuestra,
                                 const std::string& suya, double una, double unaCopia) {
        const CarpetaTemporal carpeta;
        std::vector<double> nuestros, copias;
        for (int ronda = 0; ronda < kRondas; ++ronda) {
            std::vector<std::string> orden{TELVANE_HISTORICO, "--en", nuestra, "incorporar"};
            std::vector<std::string> copia{HISTORICO_COPIA, suya};
            constexpr int kNoches = 10;
            for (int i = 0; i < kNoches; ++i) {
                const auto ruta = carpeta / (std::to_string(i) + ".rgt");
                guardar(ruta, registrador.tomar(kDeUnaNoche));
                orden.push_back(ruta);
                copia.push_back(ruta);
            }
            nuestros.push_back((correr(orden) - una) / (kNoches - 1));
            copias.push_back((correr(copia) - unaCopia) / (kNoches - 1));
        }
        const double n = mediana(nuestros), c = mediana(copias);
        std::printf(
            "noche, servidor, sin conectar: %.1f ms; COPY y ON CONFLICT %.1f ms, razón %.2f (meta <= 0.35)\n",
            n * 1e3, c * 1e3, n / c);
    }

    fs::path carpeta_;
    fs::path guiones_;
    Registrador grande_{kGrande, 1};
};

}  // namespace

}  // namespace telvane::bench

int main(int argc, char** argv) {
    const std::string_view parte = argc == 3 ? argv[2] : "todo";
    if (argc < 2 || argc > 3 || (parte != "todo" && parte != "exportar" && parte != "noches")) {
        std::fprintf(stderr, "historico_bench CARPETA_DE_LOS_GUIONES [exportar|noches]\n");
        return 2;
    }
    const auto carpeta =
        std::filesystem::path("/dev/shm") / ("historico_bench." + std::to_string(::getpid()));
    std::filesystem::create_directories(carpeta);
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    telvane::bench::Banco banco(carpeta, argv[1]);
    if (parte == "exportar") banco.correrExportar();
    if (parte == "noches") banco.correrNoches();
    if (parte == "todo") banco.correrTodo();
    std::filesystem::remove_all(carpeta);
    return 0;
}
