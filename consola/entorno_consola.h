// What a console program gets from outside: the program gives the machine's, a test its own.
#pragma once

#include <atomic>
#include <functional>

#include "platform/bucle.h"
#include "platform/reloj.h"

namespace telvane {

struct EntornoConsola {
    using Condicion = std::function<bool()>;

    Bucle& bucle;
    const Reloj& reloj;
    // Runs the loop until the condition, tested before and after each event, holds, or the time is over.
    // Returns whether it holds.
    std::function<bool(const Condicion&, Bucle::Duracion)> correrHasta;

    // Descriptors; -1: closed when the program started.
    int entrada = 0;
    int salida = 1;
    int errores = 2;

    // The signal that asked the program to end; 0: none. Every wait looks at it.
    std::atomic<int> senal = 0;
    // Whether one came that the loop has not delivered yet; asked from any thread.
    std::function<bool()> senalEnEspera = [] { return false; };
};

// Whether a signal came, delivered by the loop or not yet; from any thread.
bool haySenal(const EntornoConsola& entorno);
// Throws ErrorCli (interrumpido).
[[noreturn]] void interrumpir();
// The same once the loop delivered one.
void atenderSenal(const EntornoConsola& entorno);
// The same once one came, for whoever lets the loop wait.
void atenderSenalSinBucle(const EntornoConsola& entorno);
// Waits until the condition holds (true) or the time is over. Throws ErrorCli (interrumpido).
bool esperar(EntornoConsola& entorno, const EntornoConsola::Condicion& condicion, Bucle::Duracion plazo);
// Lets the time pass. Throws ErrorCli (interrumpido).
void pausar(EntornoConsola& entorno, Bucle::Duracion duracion);

}  // namespace telvane
