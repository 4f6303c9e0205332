// Sending the edited configuration: the question, the exchange on MSComm5, and what the form shows at each
// end.
#pragma once

#include "link/enlace.h"
#include "loggerconfig/edicion.h"
#include "loggerconfig/estado_config.h"
#include "platform/tarea.h"

namespace telvane {

class EscrituraConfig {
   public:
    EscrituraConfig(Enlace& enlace, EstadoConfig& config, Edicion& edicion)
        : enlace_(enlace), config_(config), edicion_(edicion) {}

    // Click on Command3: the logger erases its data when it takes a new configuration, so it asks first.
    Tarea<> alPulsar();
    // Communication event of MSComm5: one byte of the logger paces one of ours.
    void alComunicar();
    // From the question answered with yes until the form has left edit mode.
    bool enviando() const { return enviando_; }

   private:
    Tarea<> confirmado();
    Tarea<bool> sePuedeEnviar();
    void prepararMensaje();
    void terminarTransferencia();

    Enlace& enlace_;
    EstadoConfig& config_;
    Edicion& edicion_;
    bool enviando_ = false;
};

}  // namespace telvane
