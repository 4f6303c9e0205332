// Live data: the toggle button, and the polling that each shown frame keeps going.
#pragma once

#include <string>

#include "link/enlace.h"
#include "platform/tarea.h"

namespace telvane {

class DatosEnLinea {
   public:
    explicit DatosEnLinea(Enlace& enlace) : enlace_(enlace) {}

    // Click on Command4: starts, or says that there is no logger...
    Tarea<> empezar();
    // ...or stops. The port is left to the next frame, which closes it.
    void parar();
    // Communication event of MSComm6: one whole frame waits.
    void alComunicar();

    bool enLinea() const { return enLinea_; }

   private:
    Enlace& enlace_;
    bool enLinea_ = false;
    std::string textoLinea_;
};

}  // namespace telvane
