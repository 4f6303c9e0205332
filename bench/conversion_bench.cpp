// telvane-cli convertir as a process: one image against the tightest program, a thousand images against a
// plain script and one that works on whole columns, and the start of --help. Everything lies in memory
// (/dev/shm), so that no disk is measured, but for the last figure.
//   conversion_bench FOLDER_OF_THE_SCRIPTS
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/imagen.h"
#include "bench/mediana.h"
#include "tests/apoyo/leer_todo.h"

namespace telvane::bench {

namespace {

namespace fs = std::filesystem;

// The distribution's own, which has the scripts' libraries.
constexpr const char* kPython = "/usr/bin/python3";

struct Corrida {
    double segundos = 0;
    double picoMiB = 0;
};

Corrida correr(std::vector<std::string> orden) {
    std::vector<char*> argumentos;
    argumentos.reserve(orden.size() + 1);
    for (auto& parte : orden) argumentos.push_back(parte.data());
    argumentos.push_back(nullptr);
    posix_spawn_file_actions_t callar;
    ::posix_spawn_file_actions_init(&callar);
    for (const int descriptor : {STDOUT_FILENO, STDERR_FILENO}) {
        ::posix_spawn_file_actions_addopen(&callar, descriptor, "/dev/null", 1, 0);
    }
    const auto inicio = std::chrono::steady_clock::now();
    pid_t pid = 0;
    if (::posix_spawnp(&pid, argumentos[0], &callar, nullptr, argumentos.data(), environ) != 0) {
        throw std::runtime_error("no se pudo arrancar " + orden[0]);
    }
    int estado = 0;
    rusage uso{};
    ::wait4(pid, &estado, 0, &uso);
    ::posix_spawn_file_actions_destroy(&callar);
    if (estado != 0) throw std::runtime_error("falló " + orden[0]);
    return {std::chrono::duration<double>(std::chrono::steady_clock::now() - inicio).count(),
            static_cast<double>(uso.ru_maxrss) / 1024.0};
}

// Medians of programs that take turns.
std::vector<double> medianas(const std::vector<std::vector<std::string>>& programas, int rondas) {
    std::vector<std::vector<double>> tiempos(programas.size());
    for (int ronda = 0; ronda < rondas; ++ronda) {
        for (std::size_t i = 0; i < programas.size(); ++i) {
            tiempos[i].push_back(correr(programas[i]).segundos);
        }
    }
    std::vector<double> resultado;
    resultado.reserve(tiempos.size());
    for (const auto& suyos : tiempos) resultado.push_back(mediana(suyos));
    return resultado;
}

// Only the sample lines: the script and the tight program write no header.
std::string muestras(const fs::path& ruta) {
    std::ifstream entrada(ruta, std::ios::binary);
    std::string linea;
    std::string todas;
    while (std::getline(entrada, linea)) {
        if (linea.size() > 2 && linea[2] == '/') todas += linea + "\n";
    }
    return todas;
}

class Conversion {
   public:
    Conversion(const fs::path& programas, const fs::path& guiones)
        : cli_(programas / "telvane-cli"),
          directa_(programas / "conversion_directa"),
          guion_(guiones / "convertir.py"),
          columnas_(guiones / "convertir_pandas.py") {
        fs::create_directories(carpeta_ / "csv");
        // In the plain variant, whatever serial number the image carries.
        const auto memoria = imagenLlena();
        const auto imagen = memoria.imagen();
        std::ofstream(una_, std::ios::binary)
            .write(reinterpret_cast<const char*>(imagen.data()), static_cast<std::streamsize>(imagen.size()));
    }
    Conversion(const Conversion&) = delete;
    Conversion& operator=(const Conversion&) = delete;
    ~Conversion() {
        std::error_code sinImportancia;
        fs::remove_all(carpeta_, sinImportancia);
    }

    void unaImagen() {
        const auto tiempos = medianas({{cli_, "convertir", una_, (carpeta_ / "cli.csv").string()},
                                       {directa_, una_, (carpeta_ / "directa.csv").string()},
                                       {kPython, guion_, una_, (carpeta_ / "guion.csv").string()},
                                       {cli_, "--help"}},
                                      101);
        const auto esperadas = muestras(carpeta_ / "directa.csv");
        if (esperadas.empty() || esperadas != muestras(carpeta_ / "cli.csv") ||
            esperadas != muestras(carpeta_ / "guion.csv")) {
            throw std::runtime_error("los tres programas no escriben lo mismo");
        }
        std::printf("one image: telvane-cli %.2f ms, tightest program %.2f ms, script %.1f ms\n",
                    tiempos[0] * 1e3, tiempos[1] * 1e3, tiempos[2] * 1e3);
        std::printf("telvane-cli / tightest program = %.2f  (goal 1.10)\n", tiempos[0] / tiempos[1]);
        std::printf("--help %.2f ms  (goal 3.00)\n", tiempos[3] * 1e3);
    }

    void milImagenes() {
        constexpr int kImagenes = 1000;
        std::vector<std::string> orden = {cli_, "convertir", "--en", (carpeta_ / "csv").string()};
        std::vector<std::string> cien;
        for (int i = 0; i < kImagenes; ++i) {
            const auto ruta = carpeta_ / (std::to_string(i) + ".rgt");
            fs::create_hard_link(una_, ruta);
            orden.push_back(ruta);
            if (i == 99) cien = orden;
        }
        const auto con100 = correr(cien);
        const auto conMil = correr(orden);
        const auto cada = conMil.segundos / kImagenes;
        std::printf("a thousand images: %.3f s, %.3f ms each\n", conMil.segundos, cada * 1e3);
        std::printf("script / telvane-cli, each image = %.0f  (goal 60)\n", enMarcha(guion_) / cada);
        std::printf("columns / telvane-cli, each image = %.0f  (goal 150)\n", enMarcha(columnas_) / cada);
        std::printf("most memory: %.1f MiB for 100 images, %.1f MiB for 1000\n", con100.picoMiB,
                    conMil.picoMiB);
    }

    // On a disk, where a table counts as saved once the disk has it: against the same bytes written and
    // synced once.
    void milImagenesEnDisco() {
        constexpr int kRondas = 7;
        const auto disco = fs::path("/var/tmp") / carpeta_.filename();
        const auto tablas = disco / "csv";
        fs::create_directories(tablas);
        std::vector<std::string> orden = {cli_, "convertir", "--en", tablas.string()};
        for (const auto& entrada : fs::directory_iterator(carpeta_)) {
            if (entrada.path().extension() == ".rgt" && entrada.path() != una_)
                orden.push_back(entrada.path());
        }
        std::vector<double> razones;
        for (int ronda = 0; ronda < kRondas; ++ronda) {
            fs::remove_all(tablas);
            fs::create_directories(tablas);
            ::sync();
            const auto suyo = correr(orden).segundos;
            razones.push_back(suyo / escribirYSincronizar(tablas, disco / "otras"));
        }
        fs::remove_all(disco);
        std::printf("a thousand images on a disk / the same bytes synced once = %.2f  (goal 1.50)\n",
                    mediana(razones));
    }

   private:
    // Seconds. The tables are read before the clock runs.
    static double escribirYSincronizar(const fs::path& tablas, const fs::path& otras) {
        std::vector<std::string> contenidos;
        for (const auto& tabla : fs::directory_iterator(tablas)) contenidos.push_back(leerTodo(tabla.path()));
        fs::remove_all(otras);
        fs::create_directories(otras);
        ::sync();
        const auto inicio = std::chrono::steady_clock::now();
        for (std::size_t i = 0; i < contenidos.size(); ++i)
            std::ofstream(otras / std::to_string(i), std::ios::binary) << contenidos[i];
        ::sync();
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - inicio).count();
    }

    // Seconds of an image in a script that is under way: what twenty more take, without its start.
    [[nodiscard]] double enMarcha(const std::string& guion) const {
        constexpr int kMas = 20;
        const auto salida = (carpeta_ / "guion.csv").string();
        const std::vector<std::string> una = {kPython, guion, una_, salida};
        auto todas = una;
        for (int i = 0; i < kMas; ++i) todas.insert(todas.end(), {una_, salida});
        correr(una);  // what it loads comes from memory afterwards
        const auto tiempos = medianas({una, todas}, 5);
        if (muestras(salida) != muestras(carpeta_ / "directa.csv")) {
            throw std::runtime_error(guion + " no escribe lo mismo");
        }
        return (tiempos[1] - tiempos[0]) / kMas;
    }

    std::string cli_;
    std::string directa_;
    std::string guion_;
    std::string columnas_;
    fs::path carpeta_ = fs::path("/dev/shm") / ("telvane-" + std::to_string(::getpid()));
    std::string una_ = (carpeta_ / "una.rgt").string();
};

}  // namespace

}  // namespace telvane::bench

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("conversion_bench FOLDER_OF_THE_SCRIPTS\n", stderr);
        return 2;
    }
    try {
        telvane::bench::Conversion conversion(std::filesystem::canonical(argv[0]).parent_path(), argv[1]);
        conversion.unaImagen();
        conversion.milImagenes();
        conversion.milImagenesEnDisco();
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
