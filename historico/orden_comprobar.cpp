// telvane-historico comprobar
#include <fmt/format.h>

#include "consola/codigos_salida.h"
#include "historico/almacen_sqlite.h"
#include "historico/ordenes.h"

namespace telvane {

namespace {

void comprobar(ContextoHistorico& contexto) {
    const auto almacen = contexto.abrir(Uso::leer);
    const auto prueba = AlmacenSqlite::temporal();
    const auto defectos = Archivo(*almacen).comprobar(*prueba, [&] { contexto.atender(); });
    for (const auto& defecto : defectos) contexto.consola.resultado(defecto + "\n");
    if (!defectos.empty()) throw ErrorCli(CodigoSalida::fallo, fmt::format("defectos: {}", defectos.size()));
    contexto.consola.resultado("El archivo está entero.\n");
}

}  // namespace

void declararComprobar(Argumentos& argumentos, ContextoHistorico& contexto) {
    auto orden =
        argumentos.orden("comprobar", "Comprueba que todo está entero y es lo que dicen las imágenes");
    orden.alElegir([&contexto] { contexto.orden = [&contexto] { comprobar(contexto); }; });
}

}  // namespace telvane
