// telvane-cli configuracion
#include <memory>

#include <CLI/CLI.hpp>

#include "cli/ordenes.h"
#include "cli/sesion_cli.h"
#include "cli/textos_cli.h"

namespace telvane {

namespace {

void mostrarConfiguracion(ContextoCli& contexto, bool json) {
    SesionCli sesion(contexto.entorno, contexto.consola, contexto.com);
    const int numero = sesion.buscar();
    const auto datos = sesion.registrador().leerConfiguracion();
    contexto.consola.resultado(json ? configuracionJson(datos, numero, sesion.dispositivo(numero).string())
                                    : configuracionParaPersonas(datos));
}

}  // namespace

void declararConfiguracion(CLI::App& app, ContextoCli& contexto) {
    auto* orden = app.add_subcommand("configuracion", "Lee la configuración del registrador y la escribe");
    const auto json = std::make_shared<bool>(false);
    orden->add_flag("--json", *json, "Como objeto JSON");
    orden->callback(
        [&contexto, json] { contexto.orden = [&contexto, json] { mostrarConfiguracion(contexto, *json); }; });
}

}  // namespace telvane
