// telvane-cli: the logger without a window.
#include <memory>
#include <string>
#include <vector>

#include "cli/aplicacion.h"
#include "consola/proceso_consola.h"
#include "link/puerto_termios.h"
#include "platform/correr_proceso.h"
#include "sistema/inhibidor_logind.h"
#include "sistema/systemctl.h"

namespace telvane {
namespace {

int correr(int argc, char** argv) {
    ProcesoConsola proceso;
    InhibidorLogind inhibidor("telvane-cli");
    auto entorno = proceso.entorno<EntornoCli>(EquipoCli{
        .abrirPuertos =
            [&](const MapaCom& mapa) { return std::make_unique<PuertosSistema>(proceso.bucle(), mapa); },
        .inhibidor = &inhibidor,
        .systemctl = [](const auto& argumentos) { return preguntarASystemctl(argumentos); }});
    const SenalesConsola senales(proceso.bucle(), entorno);
    return correrCli(std::vector<std::string>(argv + (argc > 0), argv + argc), entorno);
}

}  // namespace
}  // namespace telvane

int main(int argc, char** argv) {
    return telvane::correrProceso("telvane-cli", [&] { return telvane::correr(argc, argv); });
}
