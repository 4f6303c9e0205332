// telvane up to its first frame.
#include "app/opciones.h"
#include "app/qt/aplicacion.h"
#include "app/qt/programa.h"
#include "bench/primer_cuadro.h"

int main(int argc, char** argv) {
    const auto ordenes = telvane::leerOrdenes({argv + 1, argv + argc});
    telvane::prepararQt();
    int propios = 1;
    telvane::Aplicacion aplicacion(propios, argv);
    telvane::bench::HastaElPrimerCuadro hasta;
    aplicacion.installEventFilter(&hasta);
    return telvane::Programa(aplicacion, ordenes.opciones.value()).correr();
}
