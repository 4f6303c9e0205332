// telvane-cli: the logger without a window.
#include <string>
#include <vector>

#include "cli/aplicacion.h"
#include "consola/proceso_consola.h"
#include "link/puerto_termios.h"
#include "platform/bucle_posix.h"
#include "platform/flujos.h"
#include "platform/reloj.h"
#include "sistema/inhibidor_logind.h"
#include "sistema/systemctl.h"

int main(int argc, char** argv) {
    using namespace telvane;
    const auto flujos = flujosHeredados();
    BuclePosix bucle;
    InhibidorLogind inhibidor("telvane-cli");
    const RelojSistema reloj;
    EntornoCli entorno{
        {.bucle = bucle,
         .reloj = reloj,
         .correrHasta = [&](const auto& condicion,
                            auto plazo) { return bucle.correrHasta(condicion, plazo); },
         .entrada = flujos.entrada,
         .salida = flujos.salida,
         .errores = flujos.errores},
        {.abrirPuertos = [&](const MapaCom& mapa) { return std::make_unique<PuertosSistema>(bucle, mapa); },
         .inhibidor = &inhibidor,
         .systemctl = [](const auto& argumentos) { return preguntarASystemctl(argumentos); }}};
    const SenalesConsola senales(bucle, entorno);
    return correrCli(std::vector<std::string>(argv + (argc > 0), argv + argc), entorno);
}
