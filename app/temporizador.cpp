#include "app/temporizador.h"

#include <chrono>

namespace telvane {

Temporizador::Temporizador(Bucle& bucle, Control& control) : bucle_(bucle), control_(control) {
    observacion_ = control.formulario().observar({.alCambiar =
                                                      [this](Control& cual, Que que) {
                                                          if (&cual != &control_) return;
                                                          if (que == Que::interval) alarma_.reset();
                                                          if (que == Que::enabled || que == Que::interval)
                                                              ajustar();
                                                      },
                                                  .alCambiarForma = {},
                                                  .alImprimir = {}});
    ajustar();
}

void Temporizador::ajustar() {
    if (!control_.enabled() || control_.interval() <= 0) {
        alarma_.reset();
    } else if (!alarma_) {
        armar();
    }
}

void Temporizador::armar() {
    alarma_ = bucle_.alarma(std::chrono::milliseconds(control_.interval()), [this] {
        // The next tick first: the handler may stop the timer.
        armar();
        if (control_.alPulsar) control_.alPulsar();
    });
}

}  // namespace telvane
