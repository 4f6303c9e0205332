// telvane-historico rehacer
#include <fmt/format.h>

#include "consola/codigos_salida.h"
#include "historico/ordenes.h"

namespace telvane {

namespace {

void rehacer(ContextoHistorico& contexto) {
    const auto almacen = contexto.abrir(Uso::reponer);
    const auto [fallos, avisos] = Archivo(*almacen).rehacer([&] { contexto.atender(); });
    for (const auto& aviso : avisos) contexto.consola.aviso(aviso);
    for (const auto& fallo : fallos) contexto.consola.aviso(fallo);
    if (!fallos.empty())
        throw ErrorCli(CodigoSalida::fallo, fmt::format("queda sin reponer: {}", fallos.size()));
}

}  // namespace

void declararRehacer(Argumentos& argumentos, ContextoHistorico& contexto) {
    auto orden = argumentos.orden("rehacer", "Vuelve a obtener las muestras de las imágenes");
    orden.alElegir([&contexto] { contexto.orden = [&contexto] { rehacer(contexto); }; });
}

}  // namespace telvane
