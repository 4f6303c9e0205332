// What the user did while an exchange's pause held the program back: kept until that exchange has ended.
#pragma once

#include <deque>
#include <functional>
#include <optional>

#include "platform/bucle.h"

namespace telvane {

class Control;

class Retenidos {
   public:
    struct Turnos {
        // Whether the exchange that made the pause has ended.
        std::function<bool()> libre;
        // When to look again although nothing happened, because silence alone may end it; 0: not at all.
        std::function<std::chrono::nanoseconds()> falta;
    };

    Retenidos(Bucle& bucle, Turnos turnos) : bucle_(bucle), turnos_(std::move(turnos)) {}
    Retenidos(const Retenidos&) = delete;
    Retenidos& operator=(const Retenidos&) = delete;

    // Delivers now, or, when it came within a pause, in its order after the exchange. An order that is given
    // again while it waits is one order; what is no order (nullptr) waits as often as it came.
    void entregar(Bucle::Accion accion, const Control* orden = nullptr);
    // After each event: delivers what may go.
    void revisar();

   private:
    struct Retenido {
        Bucle::Accion accion;
        const Control* orden;
    };

    Bucle& bucle_;
    Turnos turnos_;
    std::deque<Retenido> cola_;
    bool entregando_ = false;
    Bucle::Asidero alarma_;
};

}  // namespace telvane
