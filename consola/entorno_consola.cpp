#include "consola/entorno_consola.h"

#include "consola/codigos_salida.h"

namespace telvane {

bool haySenal(const EntornoConsola& entorno) {
    return entorno.senal != 0 || entorno.senalEnEspera();
}

void interrumpir() {
    throw ErrorCli(CodigoSalida::interrumpido, "interrumpido");
}

void atenderSenal(const EntornoConsola& entorno) {
    if (entorno.senal != 0) interrumpir();
}

void atenderSenalSinBucle(const EntornoConsola& entorno) {
    if (haySenal(entorno)) interrumpir();
}

bool esperar(EntornoConsola& entorno, const EntornoConsola::Condicion& condicion, Bucle::Duracion plazo) {
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

void pausar(EntornoConsola& entorno, Bucle::Duracion duracion) {
    esperar(
        entorno, [] { return false; }, duracion);
}

}  // namespace telvane
