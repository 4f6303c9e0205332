#include "tests/e2e/llamadas.h"

#include <fstream>
#include <map>
#include <stdexcept>

#include "tests/apoyo/carpeta_temporal.h"
#include "tests/apoyo/proceso.h"

namespace telvane {

namespace {

const std::string kTrazador = PROGRAMA_STRACE;

// The leak checker of a sanitized program cannot work under a tracer.
constexpr const char* kSinFugas = "ASAN_OPTIONS=detect_leaks=0";

std::vector<std::string> conEntorno(std::vector<std::string> entorno) {
    entorno.emplace_back(kSinFugas);
    return entorno;
}

std::vector<std::string> trazada(const std::vector<std::string>& opciones,
                                 const std::vector<std::string>& orden) {
    std::vector<std::string> todo = {kTrazador};
    todo.insert(todo.end(), opciones.begin(), opciones.end());
    todo.emplace_back("--");
    todo.insert(todo.end(), orden.begin(), orden.end());
    return todo;
}

}  // namespace

std::string porQueNoSeTraza() {
    if (kTrazador.empty()) return "strace is not installed";
    Proceso proceso({kTrazador, "-o", "/dev/null", "--", "/bin/true"});
    return proceso.terminar() == 0 ? "" : "tracing is not permitted here: " + proceso.errores();
}

std::vector<std::string> conDemora(const std::string& llamada, std::chrono::milliseconds cuanto) {
    const auto inyeccion =
        "inject=" + llamada + ":delay_enter=" + std::to_string(cuanto.count()) + "000:when=1";
    return {kTrazador,          "-D", "-f",      "-E", kSinFugas, "--seccomp-bpf", "-o", "/dev/null", "-e",
            "trace=" + llamada, "-e", inyeccion, "--"};
}

std::vector<LlamadaAlSistema> trazar(const std::vector<std::string>& orden, const std::string& desde,
                                     const std::vector<std::string>& entorno) {
    const CarpetaTemporal carpeta;
    const auto traza = carpeta / "traza";
    Proceso proceso(trazada({"-s", "256", "-o", traza.string()}, orden), conEntorno(entorno));
    if (proceso.terminar() != 0) throw std::runtime_error("the traced program failed: " + proceso.errores());
    std::ifstream entrada(traza);
    std::map<std::string, std::size_t> veces;
    std::vector<LlamadaAlSistema> llamadas;
    for (std::string linea; std::getline(entrada, linea);) {
        const auto nombre = linea.substr(0, linea.find('('));
        // Lines that tell of signals and of the end begin otherwise.
        if (nombre.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789_") != std::string::npos) continue;
        const auto vez = ++veces[nombre];
        // A random name is drawn again now and then: how many draws there are, another run need not repeat.
        if (nombre == "execve" || nombre == "getrandom") continue;
        if (!llamadas.empty() || linea.find(desde) != std::string::npos)
            llamadas.push_back({nombre, vez, linea});
    }
    return llamadas;
}

FinDePrograma conLlamada(const std::vector<std::string>& orden, const LlamadaAlSistema& llamada,
                         const std::string& efecto, const std::vector<std::string>& entorno) {
    const auto inyeccion = "inject=" + llamada.nombre + ":" + efecto + ":when=" + std::to_string(llamada.vez);
    std::vector<std::string> opciones = {"-o", "/dev/null", "-e", "trace=" + llamada.nombre, "-e", inyeccion};
    // Stopping at no other call is ten times as fast, but then the tracer sends no signals.
    if (!efecto.starts_with("signal")) opciones.insert(opciones.begin(), {"-f", "--seccomp-bpf"});
    Proceso proceso(trazada(opciones, orden), conEntorno(entorno));
    const auto estado = proceso.terminar();
    return {estado, proceso.errores()};
}

}  // namespace telvane
