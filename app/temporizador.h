// Runs a timer control of a form on the loop: a tick every interval while it is enabled.
#pragma once

#include "platform/bucle.h"
#include "ui/formulario.h"

namespace telvane {

class Temporizador {
   public:
    Temporizador(Bucle& bucle, Control& control);
    Temporizador(const Temporizador&) = delete;
    Temporizador& operator=(const Temporizador&) = delete;

   private:
    void ajustar();
    void armar();

    Bucle& bucle_;
    Control& control_;
    Formulario::Observacion observacion_;
    Bucle::Asidero alarma_;
};

}  // namespace telvane
