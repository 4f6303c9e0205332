// telvane-historico comprobar
#include <fmt/format.h>

#include "historico/almacen_sqlite.h"
#include "historico/ordenes.h"

namespace telvane {

namespace {

void comprobar(ContextoHistorico& contexto) {
    const auto almacen = contexto.abrir(Uso::leer);
    const auto prueba = AlmacenSqlite::temporal();
    const auto [lineas, defectos] = Archivo(*almacen).comprobar(*prueba, [&] { contexto.atender(); });
    Relato relato(contexto.consola);
    for (const auto& linea : lineas) relato.decir(linea + "\n");
    if (defectos == 0) relato.decir("El archivo está entero.\n");
    relato.terminar(defectos == 0 ? "" : fmt::format("defectos: {}", defectos));
}

}  // namespace

void declararComprobar(Argumentos& argumentos, ContextoHistorico& contexto) {
    auto orden =
        argumentos.orden("comprobar", "Comprueba que todo está entero y es lo que dicen las imágenes");
    orden.alElegir([&contexto] { contexto.orden = [&contexto] { comprobar(contexto); }; });
}

}  // namespace telvane
