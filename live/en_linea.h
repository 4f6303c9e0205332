// Live data: the toggle button, and the polling that each shown frame keeps going.
#pragma once

#include <string>

#include "link/enlace.h"
#include "platform/tarea.h"

namespace telvane {

class DatosEnLinea {
   public:
    explicit DatosEnLinea(Enlace& enlace) : enlace_(enlace) {}

    // Click on Command4: stops, refuses or starts.
    Tarea<> alPulsar();
    // Communication event of MSComm6: one whole frame waits.
    void alComunicar();

    bool enLinea() const { return enLinea_; }

   private:
    void parar();
    Tarea<> empezar();

    Enlace& enlace_;
    bool enLinea_ = false;
    std::string textoLinea_;
};

}  // namespace telvane
