// telvane-historico: the archive of many downloads and stations.
#include <chrono>
#include <cstring>
#include <span>
#include <string>
#include <vector>

#include "consola/proceso_consola.h"
#include "historico/aplicacion.h"
#include "platform/contrasena.h"
#include "platform/correr_proceso.h"

namespace telvane {
namespace {

int correr(int argc, char** argv) {
    ProcesoConsola proceso;
    auto entorno = proceso.entorno<EntornoHistorico>(EquipoHistorico{
        .ahora = [] { return std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now()); }});
    const SenalesConsola senales(proceso.bucle(), entorno);
    const std::vector<std::string> argumentos(argv + (argc > 0), argv + argc);
    // Everybody can read the line that a process was started with.
    for (int i = 1; i < argc; ++i) ocultarContrasena(std::span(argv[i], std::strlen(argv[i])));
    return correrHistorico(argumentos, entorno);
}

}  // namespace
}  // namespace telvane

int main(int argc, char** argv) {
    return telvane::correrProceso("telvane-historico", [&] { return telvane::correr(argc, argv); });
}
