#include "cli/aplicacion.h"

#include <fmt/format.h>

#include "cli/ordenes.h"
#include "cli/sesion_cli.h"
#include "consola/aplicacion_consola.h"
#include "consola/consola.h"
#include "data/archivo_base.h"
#include "link/protocolo.h"

namespace telvane {

void declararOrdenes(Argumentos& argumentos, ContextoCli& contexto) {
    argumentos.programa().opcion(
        contexto.com,
        {.nombre = "--com",
         .valor = "N=DISPOSITIVO",
         .ayuda = fmt::format("Puerto N (1 a {}) y su dispositivo; repetible. Sin ninguno, los presentes",
                              kUltimoPuerto)});
    // Also for an order that needs no port.
    argumentos.alLeer([&contexto] {
        if (!contexto.com.empty()) static_cast<void>(leerMapa(contexto.entorno, contexto.com));
    });
    for (const auto declarar : kDeclaraciones) declarar(argumentos, contexto);
    argumentos.programa().pie(
        "Códigos de salida: 0 hecho, 1 fallo, 2 mal uso, 3 sin registrador, 130 interrumpido.");
}

int correrCli(const std::vector<std::string>& argumentos, EntornoCli& entorno) {
    Consola consola(entorno);
    ContextoCli contexto{.entorno = entorno, .consola = consola, .com = {}, .orden = {}};
    const ProgramaConsola programa{
        .nombre = "telvane-cli",
        .version = TELVANE_VERSION,
        .descripcion = "El registrador desde la consola: buscarlo, leerlo, descargarlo y configurarlo",
        .flujos = reglaDeFlujos()};
    return correrPrograma(programa, consola, argumentos, contexto.orden,
                          [&](Argumentos& linea) { declararOrdenes(linea, contexto); });
}

}  // namespace telvane
