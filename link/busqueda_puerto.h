// The search for the logger's port.
#pragma once

#include <functional>

#include "link/enlace.h"
#include "ui/formulario.h"

namespace telvane {

// Prepares a channel's line settings, one after the other; a refused one is passed over.
void prepararCanal(MSComm& canal, int umbral);

class BusquedaPuerto {
   public:
    // presenta: the splash that a search without a logger closes. pulsarConfiguracion: starts the
    // configuration read, even while its button is disabled, and ends with it.
    BusquedaPuerto(Enlace& enlace, Formulario& presenta, std::function<Tarea<>()> pulsarConfiguracion)
        : enlace_(enlace), presenta_(presenta), pulsarConfiguracion_(std::move(pulsarConfiguracion)) {}

    // Asks the user, probes COM1 to COM12 in turn, keeps the first port with an answer and reads the
    // configuration. 3 s for each port without an answer.
    Tarea<> puerto();
    // Command1: disables itself, then searches.
    Tarea<> alReconectar();

   private:
    void prepararCanales();
    Tarea<bool> sondear();
    Tarea<> encontrado();
    Tarea<> noEncontrado();

    Enlace& enlace_;
    Formulario& presenta_;
    std::function<Tarea<>()> pulsarConfiguracion_;
};

}  // namespace telvane
