// The memory download: the button, the exchange on MSComm4, its progress and its cancelling.
#pragma once

#include <functional>
#include <string_view>

#include "data/estado_datos.h"
#include "link/enlace.h"
#include "platform/tarea.h"
#include "platform/vigilia.h"
#include "ui/forma_progress.h"

namespace telvane {

class Descarga {
   public:
    struct Salidas {
        std::function<void(Tarea<>)> lanzar;  // starts an operation from an event
        std::function<void()> guardarBase;    // keeps the raw image as a base file
        std::function<Tarea<>()> generargt;   // the CSV export
    };

    // vigilia: held while blocks come.
    Descarga(Enlace& enlace, EstadoDatos& datos, FormaProgress& progress, Vigilia& vigilia, Salidas salidas)
        : enlace_(enlace),
          datos_(datos),
          progress_(progress),
          vigilia_(vigilia),
          salidas_(std::move(salidas)) {}

    // Click on Command13; ends when the first reply came or the wait was over.
    Tarea<> alPulsar();
    // Communication event of MSComm4: one byte of the handshake, or one whole block.
    void alComunicar();
    // Click on Command45.
    void alCancelar();
    // Tick of Timer4: the elapsed time.
    void alTictac();

   private:
    void leerBloque(std::uint8_t primero);
    void fallar(std::string_view texto);
    Tarea<> terminar();

    Enlace& enlace_;
    EstadoDatos& datos_;
    FormaProgress& progress_;
    Vigilia& vigilia_;
    Salidas salidas_;
    bool cancelada_ = false;  // while its first reply was waited for
};

}  // namespace telvane
