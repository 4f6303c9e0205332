// telvane: the window.
#include <cstdio>
#include <string>
#include <vector>

#include "app/opciones.h"
#include "app/qt/aplicacion.h"
#include "app/qt/programa.h"
#include "platform/flujos.h"

int main(int argc, char** argv) {
    // Whatever the toolkit warns of must not reach the display's own connection.
    telvane::flujosHeredados();
    const auto ordenes = telvane::leerOrdenes(std::vector<std::string>(argv + 1, argv + argc));
    if (!ordenes.opciones) {
        std::fputs(ordenes.salida.c_str(), stdout);
        std::fputs(ordenes.error.c_str(), stderr);
        return ordenes.estado;
    }
    telvane::prepararQt();
    // The arguments were ours; the toolkit gets none.
    int propios = 1;
    telvane::Aplicacion aplicacion(propios, argv);
    return telvane::Programa(aplicacion, *ordenes.opciones).correr();
}
