// telvane: the window.
#include <string>
#include <vector>

#include "app/opciones.h"
#include "app/qt/aplicacion.h"
#include "app/qt/programa.h"
#include "platform/correr_proceso.h"
#include "platform/flujos.h"

namespace {

int correr(int argc, char** argv) {
    // Whatever the toolkit warns of must not reach the display's own connection.
    const auto flujos = telvane::flujosHeredados();
    const auto ordenes = telvane::leerOrdenes(std::vector<std::string>(argv + 1, argv + argc));
    if (!ordenes.opciones) {
        const int motivo = telvane::escribirTodo(flujos.salida, ordenes.salida);
        const auto queja = motivo == 0 ? ordenes.error : "telvane: " + telvane::quejaDeSalida(motivo) + "\n";
        static_cast<void>(telvane::escribirTodo(flujos.errores, queja));
        return motivo == 0 ? ordenes.estado : telvane::kFallo;
    }
    if (!telvane::hayPantalla()) {
        static_cast<void>(telvane::escribirTodo(flujos.errores, telvane::kSinPantalla));
        return telvane::kFallo;
    }
    telvane::prepararQt();
    // The arguments were ours; the toolkit gets none.
    int propios = 1;
    telvane::Aplicacion aplicacion(propios, argv);
    return telvane::Programa(aplicacion, *ordenes.opciones).correr();
}

}  // namespace

int main(int argc, char** argv) {
    return telvane::correrProceso("telvane", [&] { return correr(argc, argv); });
}
