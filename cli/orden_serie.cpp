// telvane-cli serie
#include <memory>
#include <string>

#include <fmt/format.h>

#include "cli/argumentos.h"
#include "cli/codigos_salida.h"
#include "cli/ordenes.h"
#include "cli/sesion_cli.h"
#include "loggerconfig/pasos_serie.h"

namespace telvane {

namespace {

void escribirSerie(ContextoCli& contexto, const std::string& cifras) {
    auto& consola = contexto.consola;
    SesionCli sesion(contexto.entorno, consola, contexto.com);
    sesion.buscar();
    auto& registrador = sesion.registrador();
    const auto antes = registrador.leerConfiguracion().Nserie;
    consola.aviso(fmt::format("Nro de serie: {} -> {}", antes, cifras));
    registrador.escribirSerie(empacarSerie(cifras));
    // The logger confirms nothing: only reading it back tells.
    const auto ahora = registrador.leerConfiguracion().Nserie;
    if (ahora != cifras) {
        throw ErrorCli(CodigoSalida::fallo,
                       fmt::format("el registrador tiene ahora el número {}, no {}: vuelva a escribirlo",
                                   ahora, cifras));
    }
    consola.resultado(fmt::format("{}\n", ahora));
}

}  // namespace

void declararSerie(Argumentos& argumentos, ContextoCli& contexto) {
    auto orden = argumentos.orden("serie", "Escribe el número de serie en el registrador y lo comprueba");
    const auto cifras = std::make_shared<std::string>();
    orden.opcion(*cifras, {.nombre = "CIFRAS",
                           .valor = "",
                           .ayuda = "Las 8 cifras del número",
                           .comprobar = motivoSerie,
                           .obligatoria = true});
    orden.alElegir(
        [&contexto, cifras] { contexto.orden = [&contexto, cifras] { escribirSerie(contexto, *cifras); }; });
}

}  // namespace telvane
