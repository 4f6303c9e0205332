// The hunt: random command lines, files, faults and moments of death, and the laws that hold whatever comes.
// TELVANE_CAZA_SEGUNDOS says for how long (10 minutes), TELVANE_CAZA_SEMILLA from which number on (any, and
// printed); a finding names its case, and with TELVANE_CAZA_CASO that case runs alone.
#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <map>
#include <mutex>
#include <optional>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gtest/gtest.h>

#include "link/protocolo.h"
#include "tests/apoyo/azar.h"
#include "tests/caza/lineas.h"
#include "tests/caza/manual.h"

namespace telvane {
namespace {

using namespace std::chrono_literals;
using Fotos = std::map<std::string, std::string>;

// Two downloads with their retries, each with its wake-up and its silences, and room for a loaded machine.
constexpr auto kLimite = 180s;
// Until the program answers signals, on a loaded machine.
constexpr auto kArranque = 1s;
constexpr std::size_t kBytesCabecera = 448;
// Of a damaged line a copy may differ in this much.
constexpr std::size_t kBytesDanados = 4096;

struct Corrida {
    std::vector<std::string> palabras;
    std::vector<std::string> lugares;
    std::string estorbo;
    std::optional<int> estado;
    std::string errores;
    // Sent to it; and so early that the program may not have been there to take it.
    int senal = 0;
    bool muyPronto = false;
    // What the line does to one reading of the memory, another one shows.
    bool copiaExacta = false;

    bool lleva(const std::string& opcion) const {
        return std::find(palabras.begin(), palabras.end(), opcion) != palabras.end();
    }
    // The value of an option, however it was written; empty: not given.
    std::string valorDe(const std::string& opcion) const {
        for (std::size_t i = 0; i < palabras.size(); ++i) {
            if (palabras[i] == opcion && i + 1 < palabras.size()) return palabras[i + 1];
            if (palabras[i].starts_with(opcion + "=")) return palabras[i].substr(opcion.size() + 1);
        }
        return "";
    }
    const std::string& orden() const { return palabras[2]; }
    bool haceTabla() const {
        return orden() == "convertir" && valorDe("--en").empty() && lugares.size() == 2 &&
               lugares.back() != "-" && !lugares.back().starts_with("/dev/");
    }
};

// Names as they stand in the photographs: "./a.rgt" is "a.rgt", a link what it leads to.
std::string llano(const std::string& nombre, const Fotos& fotos) {
    auto corto = std::filesystem::path(nombre).lexically_normal().string();
    const auto enlace = fotos.find(corto);
    if (enlace != fotos.end() && enlace->second.starts_with("-> ")) return enlace->second.substr(3);
    return corto;
}

bool esBase(const std::string& nombre) {
    const auto final = std::filesystem::path(nombre).extension();
    return final == ".rgt" || final == ".RGT";
}

// Of what began as a download of this name.
bool esParcial(const std::string& nombre) {
    return nombre.find(".parcial") != std::string::npos;
}

// What a download told of itself: nothing makes it again.
bool esFicha(const std::string& bytes) {
    return bytes.find("\"descargada\"") != std::string::npos &&
           bytes.find("\"errores_de_linea\"") != std::string::npos;
}

// Whether an earlier download's part goes on in a file: the same blocks, samples where there were none yet.
// The header's clock runs.
bool sigueEn(const std::string& parte, const std::string& bytes) {
    if (bytes.size() < parte.size()) return false;
    for (std::size_t i = kBytesCabecera; i < parte.size(); ++i) {
        if (parte[i] != bytes[i] && parte[i] != '\xFF') return false;
    }
    return parte.size() > kBytesCabecera || bytes.starts_with(parte.substr(0, 4));
}

class Leyes {
   public:
    Leyes(const Corrida& corrida, const Fotos& antes, const Fotos& despues)
        : corrida_(corrida), antes_(antes), despues_(despues) {}

    std::vector<std::string> rotas(const std::string& memoriaAntes, const std::string& memoriaDespues) {
        termina();
        hablaClaro();
        respetaLoQueHabia();
        cumpleLoQueDice();
        if (memoriaAntes.substr(kBytesCabecera) != memoriaDespues.substr(kBytesCabecera))
            guardaAntes(memoriaAntes);
        return rotas_;
    }

   private:
    bool hecho() const { return corrida_.estado == 0; }
    // Ended by it, as only a kill can, or a signal before the program has taken them over.
    bool porLaSenal() const {
        return corrida_.senal != 0 && corrida_.estado == 128 + corrida_.senal &&
               (corrida_.senal == SIGKILL || corrida_.muyPronto);
    }
    void rota(const std::string& que) { rotas_.push_back(que); }

    void termina() {
        if (!corrida_.estado) rota(fmt::format("still runs after {} s", kLimite.count()));
        constexpr std::array<int, 5> kEstados = {0, 1, 2, 3, 130};
        const auto estado = corrida_.estado.value_or(0);
        if (std::ranges::find(kEstados, estado) == kEstados.end() && !porLaSenal())
            rota(fmt::format("ends with {}", estado));
    }
    // A failure says something, in our own words.
    void hablaClaro() {
        const auto estado = corrida_.estado.value_or(0);
        const auto lugar = corrida_.errores.rfind("telvane-cli: ");
        if (estado != 0 && !porLaSenal() && lugar == std::string::npos) rota("fails without a word");
        for (const auto* ajeno : {"std::", "filesystem error", "terminate called", "what():", "basic_string",
                                  "vector", "Error:", "No such", "not ", "Runtime"}) {
            if (corrida_.errores.find(ajeno) != std::string::npos) rota(fmt::format("says \"{}\"", ajeno));
        }
        // Chapter 13 says of each message what to do.
        if (estado != 0 && estado != 130 && lugar != std::string::npos &&
            !estaExplicado(corrida_.errores.substr(lugar)))
            rota("fails with a message that the manual does not explain");
        if (std::any_of(corrida_.errores.begin(), corrida_.errores.end(),
                        [](char c) { return (c >= 0 && c < ' ' && c != '\n') || c == 0x7F; }))
            rota("sends control characters to the terminal");
    }
    bool nombra(const std::string& opcion, const std::string& nombre) const {
        const auto valor = corrida_.valorDe(opcion);
        return !valor.empty() && llano(valor, antes_) == nombre;
    }
    // A base file or a data sheet is replaced where that was asked for, a backup never; a data sheet by
    // another one only; a table is named, or stands in the folder that was.
    bool pudoReemplazar(const std::string& nombre) const {
        if (esFicha(antes_.at(nombre))) return nombra("--ficha", nombre) && corrida_.lleva("--reemplazar");
        if (nombra("--base", nombre)) return corrida_.lleva("--reemplazar");
        if (esBase(nombre) || nombra("--ficha", nombre)) return false;
        if (nombra("--csv", nombre)) return true;
        if (corrida_.orden() != "convertir") return false;
        const auto carpeta = corrida_.valorDe("--en");
        if (!carpeta.empty()) return nombre.starts_with(carpeta + "/");
        return corrida_.haceTabla() && llano(corrida_.lugares.back(), antes_) == nombre;
    }
    // Whoever is stopped between the last step and its end has replaced it, by a whole one. What --base names
    // is an image, whatever it is called.
    bool reemplazoEntero(const std::string& nombre) const {
        const auto ahora = despues_.find(nombre);
        if (ahora == despues_.end() || !pudoReemplazar(nombre)) return false;
        return esBase(nombre) || nombra("--base", nombre) ? ahora->second.size() == kBytesMemoria
                                                          : esTablaEntera(nombre, ahora->second);
    }
    // Objects of no samples are none; every other table has its heading.
    bool esTablaEntera(const std::string& nombre, const std::string& bytes) const {
        const bool deObjetos = corrida_.valorDe("--formato") == "jsonl" || nombre.ends_with(".jsonl");
        return bytes.ends_with('\n') || (bytes.empty() && deObjetos);
    }
    void respetaLoQueHabia() {
        for (const auto& [nombre, bytes] : antes_) {
            const auto ahora = despues_.find(nombre);
            if (ahora != despues_.end() && ahora->second == bytes) continue;
            if (esParcial(nombre)) {
                if (!sigueLaParte(nombre, bytes)) rota(fmt::format("what \"{}\" held is nowhere", nombre));
            } else if (!reemplazoEntero(nombre)) {
                rota(fmt::format("\"{}\" was there before and changed", nombre));
            }
        }
        for (const auto& [nombre, bytes] : despues_) {
            if (!porLaSenal() && !antes_.contains(nombre) &&
                std::filesystem::path(nombre).filename().string().starts_with('.'))
                rota(fmt::format("leaves \"{}\"", nombre));
            if (!porLaSenal() && !antes_.contains(nombre) && esParcial(nombre) && bytes.empty())
                rota(fmt::format("leaves \"{}\" without a byte", nombre));
        }
    }
    // Of an empty one only its name says that it went on: it got blocks, or became the base file.
    bool sigueLaParte(const std::string& nombre, const std::string& bytes) const {
        if (!bytes.empty())
            return std::ranges::any_of(despues_, [&](const auto& a) { return sigueEn(bytes, a.second); });
        if (despues_.contains(nombre)) return true;
        const auto base = despues_.find(nombre.substr(0, nombre.rfind(".parcial")));
        if (base == despues_.end() || base->second.size() != kBytesMemoria) return false;
        const auto antes = antes_.find(base->first);
        return nombre.ends_with(".parcial") && (antes == antes_.end() || antes->second != base->second);
    }
    // Where a file's name is given; empty for a stream.
    static bool esArchivo(const std::string& valor) {
        return !valor.empty() && valor != "-" && !valor.starts_with("/dev/");
    }
    void cumpleLoQueDice() {
        if (!hecho() || corrida_.lleva("--help")) return;
        if (corrida_.orden() == "convertir" && !corrida_.valorDe("--en").empty()) {
            for (const auto& salida : salidasEnCarpeta()) estaEntero(salida);
        }
        for (const auto* opcion : {"--base", "--csv", "--ficha"}) {
            const auto valor = corrida_.valorDe(opcion);
            if (esArchivo(valor)) estaEntero(valor);
        }
        if (corrida_.haceTabla()) estaEntero(corrida_.lugares.back());
    }
    // Of --en: each input's name with the format's ending.
    std::vector<std::string> salidasEnCarpeta() const {
        const auto formato = corrida_.valorDe("--formato");
        std::vector<std::string> salidas;
        for (const auto& entrada : corrida_.lugares) {
            const auto nombre = std::filesystem::path(entrada).stem().string();
            salidas.push_back(
                fmt::format("{}/{}.{}", corrida_.valorDe("--en"), nombre, formato.empty() ? "csv" : formato));
        }
        return salidas;
    }
    void estaEntero(const std::string& valor) {
        const auto archivo = despues_.find(llano(valor, despues_));
        if (archivo == despues_.end()) {
            rota(fmt::format("says done, and {} is not there", valor));
        } else if (esBase(archivo->first) || corrida_.valorDe("--base") == valor ||
                           corrida_.valorDe("--respaldo") == valor
                       ? archivo->second.size() != kBytesMemoria
                       : !esTablaEntera(archivo->first, archivo->second)) {
            rota(fmt::format("says done, and {} is not whole", valor));
        }
    }
    void guardaAntes(const std::string& memoria) {
        for (const auto* queSigue : {"su memoria debe seguir ahí", "la memoria siguen como estaban"}) {
            if (corrida_.errores.find(queSigue) != std::string::npos)
                rota("says that the memory is there, and it was erased");
        }
        if (corrida_.orden() != "configurar") rota("erased the memory without being asked");
        if (!corrida_.lleva("--borrar-memoria")) rota("erased the memory without --borrar-memoria");
        if (corrida_.lleva("--sin-respaldo")) return;
        if (hecho() && esArchivo(corrida_.valorDe("--respaldo"))) estaEntero(corrida_.valorDe("--respaldo"));
        const bool copia = std::any_of(despues_.begin(), despues_.end(), [&](const auto& archivo) {
            const auto& bytes = archivo.second;
            if (bytes.size() != kBytesMemoria) return false;
            std::size_t distintos = 0;
            for (std::size_t i = kBytesCabecera; i < bytes.size(); ++i)
                distintos += bytes[i] != memoria[i] ? 1 : 0;
            return distintos <= (corrida_.copiaExacta ? 0 : kBytesDanados);
        });
        if (!copia) rota("erased the memory, and no whole copy of it is there");
    }

    const Corrida& corrida_;
    const Fotos& antes_;
    const Fotos& despues_;
    std::vector<std::string> rotas_;
};

// What the session does to a program: little room for a file, streams that are closed or take nothing.
const char* estorbo(Azar& azar) {
    constexpr auto kEstorbos = std::to_array<const char*>(
        {"ulimit -f 0", "ulimit -f 60", "exec <&-", "exec >&-", "exec >/dev/full", "ulimit -n 8"});
    return vez(azar, 6) ? uno(azar, kEstorbos) : ":";
}

Corrida correr(Azar& azar, const Mundo& mundo, const std::vector<OrdenDeclarada>& ordenes) {
    auto [palabras, lugares] = linea(azar, ordenes, mundo);
    Corrida corrida;
    corrida.palabras = std::move(palabras);
    corrida.lugares = std::move(lugares);
    corrida.estorbo = estorbo(azar);
    std::vector<std::string> todo = {"/bin/sh",
                                     "-c",
                                     fmt::format("cd \"$1\" && shift && {} && exec \"$@\"", corrida.estorbo),
                                     "sh",
                                     mundo.carpeta(),
                                     TELVANE_CLI};
    todo.insert(todo.end(), corrida.palabras.begin(), corrida.palabras.end());
    const bool sinFin = corrida.orden() == "en-linea" && corrida.valorDe("--cuenta").empty();
    const bool muere = sinFin || vez(azar, 5);
    const auto cuando = std::chrono::milliseconds(tirar(azar, 6000));
    constexpr std::array<int, 4> kSenales = {SIGINT, SIGTERM, SIGHUP, SIGKILL};
    const int senal = uno(azar, kSenales);
    Proceso proceso(todo, {"XDG_DATA_HOME=" + (mundo.carpeta() / "datos").string()});
    if (muere) corrida.estado = proceso.terminar(cuando);
    if (muere && !corrida.estado) {
        corrida.senal = senal;
        corrida.muyPronto = cuando < kArranque;
        proceso.senal(senal);
    }
    if (!corrida.estado) corrida.estado = proceso.terminar(kLimite);
    corrida.errores = proceso.errores();
    const bool siempre = std::ranges::any_of(
        mundo.fallos(), [](const auto& fallo) { return fallo.find(":siempre") != std::string::npos; });
    corrida.copiaExacta = mundo.fallos().empty() ||
                          (mundo.fallos().size() == 1 && !siempre && !corrida.lleva("--sin-verificar"));
    return corrida;
}

// A world, and a few commands in it, one after the other. Gives what was found.
std::string caso(unsigned semilla, const std::vector<OrdenDeclarada>& ordenes) {
    Azar azar(semilla);
    Mundo mundo(azar, TELVANE_SIM);
    std::string hallazgos;
    for (auto cuantas = 1 + tirar(azar, 3); cuantas > 0; --cuantas) {
        const auto antes = mundo.fotografiar();
        const auto memoria = mundo.memoria();
        mundo.encender(azar);
        const auto corrida = correr(azar, mundo, ordenes);
        mundo.apagar();
        for (const auto& rota : Leyes(corrida, antes, mundo.fotografiar()).rotas(memoria, mundo.memoria())) {
            hallazgos += fmt::format("TELVANE_CAZA_CASO={} ({}; {}): \"{}\" ends with {}, {}\n{}\n", semilla,
                                     fmt::join(mundo.fallos(), " "), corrida.estorbo,
                                     fmt::join(corrida.palabras, "\" \""), corrida.estado.value_or(-1), rota,
                                     corrida.errores);
        }
    }
    return hallazgos;
}

TEST(Caza, TheLawsHoldWhateverComes) {
    const auto ordenes = declaradas(TELVANE_CLI);
    ASSERT_GE(ordenes.size(), 8U);
    if (const auto uno = delEntorno("TELVANE_CAZA_CASO")) {
        EXPECT_EQ(caso(*uno, ordenes), "");
        return;
    }
    const auto hasta = std::chrono::steady_clock::now() +
                       std::chrono::seconds(delEntorno("TELVANE_CAZA_SEGUNDOS").value_or(600));
    const auto primero = delEntorno("TELVANE_CAZA_SEMILLA").value_or(std::random_device()());
    fmt::print("TELVANE_CAZA_SEMILLA={}\n", primero);
    std::atomic<unsigned> siguiente = primero;
    std::mutex cerrojo;
    std::string hallazgos;
    // The commands wait for the logger more than they compute.
    std::vector<std::jthread> hilos;
    for (unsigned i = 0; i < 3 * std::max(1u, std::thread::hardware_concurrency()); ++i) {
        hilos.emplace_back([&] {
            while (std::chrono::steady_clock::now() < hasta) {
                const auto hallado = caso(siguiente++, ordenes);
                const std::scoped_lock llave(cerrojo);
                if (!hallado.empty()) fmt::print("{}", hallado);
                std::fflush(stdout);
                hallazgos += hallado;
            }
        });
    }
    hilos.clear();
    fmt::print("caza: {} casos\n", siguiente - primero);
    EXPECT_EQ(hallazgos, "");
    EXPECT_GT(siguiente - primero, 1U);
}

}  // namespace
}  // namespace telvane
