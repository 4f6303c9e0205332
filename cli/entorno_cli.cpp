#include "cli/entorno_cli.h"

#include "cli/codigos_salida.h"

namespace telvane {

void interrumpir() {
    throw ErrorCli(CodigoSalida::interrumpido, "interrumpido");
}

void atenderSenal(const EntornoCli& entorno) {
    if (entorno.senal != 0) interrumpir();
}

bool esperar(EntornoCli& entorno, const EntornoCli::Condicion& condicion, Bucle::Duracion plazo) {
    bool llego = false;
    entorno.correrHasta(
        [&] {
            llego = condicion();
            return llego || entorno.senal != 0;
        },
        plazo);
    atenderSenal(entorno);
    return llego;
}

void pausar(EntornoCli& entorno, Bucle::Duracion duracion) {
    esperar(
        entorno, [] { return false; }, duracion);
}

}  // namespace telvane
