// telvane-cli configuracion
#include <memory>

#include "cli/ordenes.h"
#include "cli/sesion_cli.h"
#include "cli/textos_cli.h"

namespace telvane {

namespace {

void mostrarConfiguracion(ContextoCli& contexto, bool json) {
    contexto.consola.exigirSalida();
    SesionCli sesion(contexto.entorno, contexto.consola, contexto.com);
    const int numero = sesion.buscar();
    const auto datos = sesion.registrador().leerConfiguracion();
    contexto.consola.resultado(json ? configuracionJson(datos, numero, sesion.dispositivo(numero).string())
                                    : configuracionParaPersonas(datos));
}

}  // namespace

void declararConfiguracion(Argumentos& argumentos, ContextoCli& contexto) {
    auto orden = argumentos.orden("configuracion", "Lee la configuración del registrador y la escribe");
    const auto json = std::make_shared<bool>(false);
    orden.bandera(*json, "--json", "Como objeto JSON");
    orden.alElegir(
        [&contexto, json] { contexto.orden = [&contexto, json] { mostrarConfiguracion(contexto, *json); }; });
}

}  // namespace telvane
