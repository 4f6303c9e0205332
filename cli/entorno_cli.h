// What the console tool gets from outside: the program gives the machine's, a test its own.
#pragma once

#include <atomic>
#include <functional>
#include <memory>

#include "link/mapa_com.h"
#include "link/puerto_serie.h"
#include "platform/bucle.h"
#include "platform/inhibidor.h"
#include "platform/reloj.h"

namespace telvane {

struct EntornoCli {
    using Condicion = std::function<bool()>;

    Bucle& bucle;
    const Reloj& reloj;
    // Runs the loop until the condition, tested before and after each event, holds, or the time is over.
    // Returns whether it holds.
    std::function<bool(const Condicion&, Bucle::Duracion)> correrHasta;
    std::function<std::unique_ptr<Puertos>(const MapaCom&)> abrirPuertos;
    RaicesSistema raices = {};

    // Descriptors; -1: closed when the program started.
    int entrada = 0;
    int salida = 1;
    int errores = 2;

    // Keeps the machine awake during a download; none: it may sleep.
    Inhibidor* inhibidor = nullptr;

    // The signal that asked the program to end; 0: none. Every wait looks at it.
    std::atomic<int> senal = 0;
    // Whether one came that the loop has not delivered yet; asked from any thread.
    std::function<bool()> senalEnEspera = [] { return false; };
};

// Throws ErrorCli (interrumpido).
[[noreturn]] void interrumpir();
// The same once a signal came.
void atenderSenal(const EntornoCli& entorno);
// Waits until the condition holds (true) or the time is over. Throws ErrorCli (interrumpido).
bool esperar(EntornoCli& entorno, const EntornoCli::Condicion& condicion, Bucle::Duracion plazo);
// Lets the time pass. Throws ErrorCli (interrumpido).
void pausar(EntornoCli& entorno, Bucle::Duracion duracion);

}  // namespace telvane
