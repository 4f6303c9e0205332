// The form's state that the configuration exchanges and the exports share.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <string>

#include "ui/forma_inicio.h"

namespace telvane {

struct EstadoConfig {
    std::string digitosSerie;               // digits of the serial number as they came
    float numeroSerie = 0;                  // the same as a number; selects the evaporation variant
    std::uint8_t intervaloCodigo = 0;       // packed decimal minutes
    std::string intervalo;                  // minutes as text, "1" to "60"
    std::array<std::string, 6> relojLeido;  // hour, minute, second, day, month, year as they came
    std::string textoConfig;                // summary text, as the exports write it
    std::chrono::seconds horaConfig{0};     // time of day shown in MaskEdBox2, advanced by Timer1
    std::string fechaConfig;                // date to send, as the date field's text
    std::string mensajeConfig;              // message being written, one byte a character
};

// Shows only the option of this interval code, checked; any other code changes nothing.
void mostrarSoloIntervalo(FormaInicio& forma, std::uint8_t codigo);

}  // namespace telvane
