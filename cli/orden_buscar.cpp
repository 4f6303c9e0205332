// telvane-cli buscar
#include <fmt/format.h>

#include "cli/ordenes.h"
#include "cli/sesion_cli.h"
#include "link/protocolo.h"
#include "platform/texto_visible.h"

namespace telvane {

namespace {

void buscar(ContextoCli& contexto) {
    contexto.consola.exigirSalida();
    SesionCli sesion(contexto.entorno, contexto.consola, contexto.com);
    const int numero = sesion.buscar();
    contexto.consola.resultado(fmt::format("COM{} {}\n", numero, nombreVisible(sesion.dispositivo(numero))));
}

}  // namespace

void declararBuscar(Argumentos& argumentos, ContextoCli& contexto) {
    auto orden = argumentos.orden("buscar", "Busca el puerto en que responde el registrador y lo escribe");
    orden.pie(fmt::format("Prueba COM1 a COM{} en orden, {} s cada uno. Escribe \"COM1 /dev/ttyUSB0\".",
                          kUltimoPuerto, (kEsperaSonda + kEsperaSegundaSonda).count()));
    orden.alElegir([&contexto] { contexto.orden = [&contexto] { buscar(contexto); }; });
}

}  // namespace telvane
