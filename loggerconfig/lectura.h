// The configuration read: the button, the exchange on MSComm2, and what is shown where.
#pragma once

#include "link/enlace.h"
#include "loggerconfig/datos_config.h"
#include "loggerconfig/edicion.h"
#include "loggerconfig/estado_config.h"
#include "loggerconfig/pasos_lectura.h"
#include "platform/tarea.h"
#include "ui/formulario.h"

namespace telvane {

class LecturaConfig {
   public:
    LecturaConfig(Enlace& enlace, EstadoConfig& config, Edicion& edicion, Formulario& presenta)
        : enlace_(enlace), config_(config), edicion_(edicion), presenta_(presenta) {}

    // Click on configuracion; ends when the first byte came or the wait was over. The block itself is carried
    // by alComunicar, which has no time-out once the first byte has come.
    Tarea<> alPulsar();
    // Communication event of MSComm2.
    void alComunicar();

   private:
    void mostrar(const PasoLectura& paso);
    void terminar();
    void abandonar();

    Enlace& enlace_;
    EstadoConfig& config_;
    Edicion& edicion_;
    Formulario& presenta_;
    DatosConfig datos_;
};

}  // namespace telvane
