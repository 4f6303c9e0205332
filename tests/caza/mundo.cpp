#include "tests/caza/mundo.h"

#include <array>
#include <csignal>
#include <fstream>
#include <stdexcept>
#include <utility>

#include <fmt/format.h>

#include "link/protocolo.h"
#include "simulator/fallo.h"
#include "simulator/memoria_simulada.h"
#include "tests/apoyo/leer_todo.h"

namespace telvane {

namespace {

namespace fs = std::filesystem;

constexpr auto kNombres = std::to_array<const char*>(
    {"a.rgt",         "b.rgt",         "nuevo.rgt",        "nuevo.csv",  "tabla.csv",
     "TABLA.CSV",     "t.xls",         "t.jsonl",          "con blanco", "ñ.rgt",
     "no/hay",        "carpeta",       "enlace.rgt",       "roto",       "./a.rgt",
     "carpeta/x.rgt", "a.rgt.parcial", "carpeta/../a.rgt", "x.RGT",      "\x1b[2J\x7f.rgt",
     "\x9b.csv",      "/dev/null",     "[a,b].csv",        "[c]",        "++",
     "a.rgt.json"});

// What an earlier download told of itself.
constexpr const char* kFicha = R"({"descargada": "2026-01-02T03:04:05Z", "errores_de_linea": 0}
)";

void escribir(const fs::path& ruta, const std::string& bytes) {
    std::ofstream(ruta, std::ios::binary) << bytes;
}

std::string imagen(Azar& azar) {
    const auto bytes = memoriaSimulada(Clima(static_cast<std::uint32_t>(tirar(azar, 100))));
    return {bytes.begin(), bytes.end()};
}

// Of an earlier download, of whatever else, or of nothing.
std::string parte(Azar& azar) {
    if (vez(azar, 4)) return "";
    return vez(azar, 3) ? std::string(1 + tirar(azar, 100), 'x')
                        : imagen(azar).substr(0, tirar(azar, kBytesMemoria));
}

std::string fallo(Azar& azar) {
    constexpr std::array<const char*, 9> kDonde = {"sonda",    "en-linea:cuadro=1", "en-linea:cuadro=2",
                                                   "lectura",  "escritura",         "serie",
                                                   "descarga", "descarga:bloque=7", "descarga:bloque=4095"};
    constexpr std::array<const char*, 10> kQue = {"silencio", "demora=600", "demora=3500", "cambiar=80",
                                                  "invertir", "insertar=1", "insertar=40", "perder",
                                                  "doblar",   "colgar"};
    constexpr std::array<const char*, 4> kVeces = {"", "", ":vez=2", ":siempre"};
    const std::string donde = uno(azar, kDonde);
    const auto bytes = donde.starts_with("serie")       ? kRespuestasSerie
                       : donde.starts_with("descarga:") ? kBytesBloque
                                                        : kBytesMarco;
    const auto byte = donde == "descarga" ? tirar(azar, kAcuses) : tirar(azar, bytes);
    return fmt::format("{}:byte={}{}:{}", donde, byte, uno(azar, kVeces), uno(azar, kQue));
}

// The simulator takes none beside which another one could never happen.
std::vector<std::string> fallosQueVanJuntos(Azar& azar) {
    std::vector<std::string> textos;
    std::vector<Fallo> fallos;
    for (auto cuantos = tirar(azar, 3); cuantos > 0; --cuantos) {
        auto texto = fallo(azar);
        fallos.push_back(Fallo::leer(texto));
        if (fallosQueChocan(fallos))
            fallos.pop_back();
        else
            textos.push_back(std::move(texto));
    }
    return textos;
}

}  // namespace

Mundo::Mundo(Azar& azar, std::string simulador) : programa_(std::move(simulador)) {
    poblar(azar);
    encender(azar);
    apagar();
}

void Mundo::encender(Azar& azar) {
    fallos_ = fallosQueVanJuntos(azar);
    std::vector<std::string> orden = {
        programa_, "--enlace", puerto(), "--memoria", temporal_ / "memoria.rgt", "--baudios", "0"};
    for (const auto& uno : fallos_) orden.insert(orden.end(), {"--fallo", uno});
    simulador_ = std::make_unique<Proceso>(orden);
    if (!simulador_->linea()) throw std::runtime_error("telvane-sim: " + simulador_->errores());
}

void Mundo::apagar() {
    simulador_->senal(SIGTERM);
    if (simulador_->terminar() != 0) throw std::runtime_error("telvane-sim: " + simulador_->errores());
    simulador_.reset();
}

void Mundo::poblar(Azar& azar) {
    fs::create_directories(carpeta() / "carpeta");
    if (vez(azar, 2)) escribir(carpeta() / "a.rgt", imagen(azar));
    if (vez(azar, 2)) escribir(carpeta() / "b.rgt", imagen(azar).substr(0, tirar(azar, kBytesMemoria)));
    if (vez(azar, 3)) escribir(carpeta() / "tabla.csv", "valioso\r\n");
    if (vez(azar, 4)) escribir(carpeta() / "con blanco", "");
    for (const auto* nombre : {"a.rgt.json", "con blanco"}) {
        if (vez(azar, 3)) escribir(carpeta() / nombre, kFicha);
    }
    if (vez(azar, 4)) escribir(carpeta() / "nuevo.csv", std::string(1 + tirar(azar, 100), 'x'));
    // What earlier downloads left.
    for (const auto* nombre : {"a.rgt.parcial", "nuevo.rgt.parcial", "a.rgt.parcial.anterior"}) {
        if (!vez(azar, 4)) continue;
        escribir(carpeta() / nombre, parte(azar));
    }
    if (vez(azar, 4)) fs::create_symlink("a.rgt", carpeta() / "enlace.rgt");
    if (vez(azar, 4)) fs::create_symlink("nada", carpeta() / "roto");
}

std::string Mundo::nombre(Azar& azar) const {
    return uno(azar, kNombres);
}

std::map<std::string, std::string> Mundo::fotografiar() const {
    std::map<std::string, std::string> fotos;
    for (const auto& entrada : fs::recursive_directory_iterator(carpeta())) {
        const auto nombre = entrada.path().lexically_relative(carpeta()).string();
        if (entrada.is_symlink()) {
            fotos[nombre] = "-> " + fs::read_symlink(entrada.path()).string();
        } else if (entrada.is_regular_file()) {
            fotos[nombre] = leerTodo(entrada.path());
        }
    }
    return fotos;
}

std::string Mundo::memoria() const {
    return leerTodo(temporal_ / "memoria.rgt");
}

}  // namespace telvane
