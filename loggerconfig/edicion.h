// Editing the configuration on the form: unlocking it, the interval options, the date, the time, the PC's
// clock.
#pragma once

#include <optional>
#include <string_view>

#include "link/enlace.h"
#include "loggerconfig/estado_config.h"
#include "platform/tarea.h"

namespace telvane {

// "14:58:45" as seconds of the day; blanks of an unfilled mask stand for nothing. nullopt: no valid time.
std::optional<std::chrono::seconds> leerHora(std::string_view texto);

class Edicion {
   public:
    Edicion(Enlace& enlace, EstadoConfig& config) : enlace_(enlace), config_(config) {}

    // Click on Command2: enters edit mode. There is no way back but sending or reading again.
    void alCambiarConfiguracion();
    // Click on one of the six options: 0 for Option1.
    void alElegirIntervalo(std::size_t indice);
    // The date field changed.
    void alCambiarFecha();
    // The time field was left: it is checked in edit mode.
    Tarea<> alSalirDeHora();
    // An invalid time is replaced by the PC's after a message; in every case horaConfig is what the field
    // shows. False: it was invalid.
    Tarea<bool> validarHora();
    // Click on Check1, whatever its new state: takes the PC's date and time.
    void alTomarRelojPc();
    // Tick of Timer1.
    void alTictac();

    bool editando() const { return !enlace_.forma.fecha1.locked(); }
    // Locks the fields and hides what only edit mode shows; only the chosen interval stays visible, and
    // nothing can be sent. Nothing outside edit mode.
    void dejar();
    // The same as the end of a write: the buttons that edit mode closed come back.
    void salirDeEdicion();

   private:
    void cerrar();

    Enlace& enlace_;
    EstadoConfig& config_;
};

}  // namespace telvane
