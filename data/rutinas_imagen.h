// The main form's two routines that take a memory image byte by byte, for a caller who walks it himself.
#pragma once

#include <cstdint>
#include <string>

#include "data/estado_datos.h"
#include "loggerconfig/datos_config.h"
#include "loggerconfig/estado_config.h"
#include "ui/forma_inicio.h"

namespace telvane {

// They work on the form's own state: the decoder that the exports use, the texts that they write. A place
// that an image does not have is told in a printed line, and its byte is left out.
class RutinasImagen {
   public:
    RutinasImagen(FormaInicio& forma, EstadoConfig& config, Decodificador& decodificador)
        : forma_(forma), config_(config), decodificador_(decodificador) {}

    // A byte of a block, at its position 0 to 63.
    void proceso(int posicion, std::uint8_t byte);
    // The lines that were finished since they were last taken.
    std::string tomarLineas();
    // A byte of the image's header, at its position 0 to 431; 0 begins another header.
    void config(std::int32_t contador, std::uint8_t byte);

   private:
    FormaInicio& forma_;
    EstadoConfig& config_;
    Decodificador& decodificador_;
    TextoDeCabecera cabecera_;
};

}  // namespace telvane
