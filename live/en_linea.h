// Live data: the toggle button, and the polling that each shown frame keeps going.
#pragma once

#include <string>

#include "link/enlace.h"
#include "live/canales_propios.h"
#include "platform/bucle.h"
#include "platform/tarea.h"

namespace telvane {

class DatosEnLinea {
   public:
    DatosEnLinea(Enlace& enlace, Bucle& bucle) : enlace_(enlace), bucle_(bucle) {}

    // Click on Command4: starts, or says that there is no logger...
    Tarea<> empezar();
    // ...or stops. The port is left to the next frame, which closes it.
    void parar();
    // Communication event of MSComm6: one whole frame waits.
    void alComunicar();

    bool enLinea() const { return enLinea_; }

   private:
    void abrir();
    void pedir();
    void pedirEnPaso();
    void cerrar();

    Enlace& enlace_;
    Bucle& bucle_;
    bool enLinea_ = false;
    std::string textoLinea_;
    CanalesPropios propios_;
    bool sobran_ = false;  // bytes were left over behind the last frame: the next one begins with them
    Bucle::Asidero silencio_;
};

}  // namespace telvane
