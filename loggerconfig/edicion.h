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
    // The time field was typed in, and left: it is checked then, or when it is left in edit mode.
    void alCambiarHora() { horaTocada_ = true; }
    Tarea<> alSalirDeHora();
    // An invalid time is replaced by the PC's after a message; in every case horaConfig is what the field
    // shows.
    Tarea<> validarHora();
    // Click on Check1, whatever its new state: takes the PC's date and time.
    void alTomarRelojPc();
    // Tick of Timer1.
    void alTictac();

    // Locks the fields and hides what only edit mode shows; only the chosen interval stays visible.
    void salirDeEdicion();

   private:
    Enlace& enlace_;
    EstadoConfig& config_;
    bool horaTocada_ = false;
};

}  // namespace telvane
