// A console program's process: its streams, its loop and clock, and the signals that end it.
#pragma once

#include <utility>

#include "consola/entorno_consola.h"
#include "platform/bucle_posix.h"
#include "platform/flujos.h"
#include "platform/reloj.h"

namespace telvane {

// What a program's main() gives its console, made before anything else is opened.
class ProcesoConsola {
   public:
    ProcesoConsola() = default;
    ProcesoConsola(const ProcesoConsola&) = delete;
    ProcesoConsola& operator=(const ProcesoConsola&) = delete;

    BuclePosix& bucle() { return bucle_; }

    // Entorno: an EntornoConsola and the program's own things, equipo. The process outlives it.
    template <class Entorno, class Equipo>
    Entorno entorno(Equipo equipo) {
        return {{.bucle = bucle_,
                 .reloj = reloj_,
                 .correrHasta = [this](const auto& condicion,
                                       auto plazo) { return bucle_.correrHasta(condicion, plazo); },
                 .entrada = flujos_.entrada,
                 .salida = flujos_.salida,
                 .errores = flujos_.errores},
                std::move(equipo)};
    }

   private:
    // First of all: they keep the numbers of closed streams from what the loop opens.
    const FlujosHeredados flujos_ = flujosHeredados();
    BuclePosix bucle_;
    const RelojSistema reloj_{};
};

// While it lives, a signal that asks the program to end stands in the environment. Both outlive it.
class SenalesConsola {
   public:
    // Throws std::system_error when the system gives no descriptor.
    SenalesConsola(Bucle& bucle, EntornoConsola& entorno);
    SenalesConsola(const SenalesConsola&) = delete;
    SenalesConsola& operator=(const SenalesConsola&) = delete;
    ~SenalesConsola();

   private:
    EntornoConsola& entorno_;
    Senales senales_;
};

}  // namespace telvane
