// Writing the serial number from Text10: the keys, the exchange on MSComm3, and the texts of Label1.
#pragma once

#include "link/enlace.h"
#include "loggerconfig/estado_config.h"
#include "loggerconfig/pasos_serie.h"
#include "platform/tarea.h"

namespace telvane {

// A key of Text10: only digits, Backspace and Enter pass; any other becomes 0.
int teclaDeSerie(int tecla);

class EscrituraSerie {
   public:
    EscrituraSerie(Enlace& enlace, EstadoConfig& config) : enlace_(enlace), config_(config) {}

    // Key press in Text10, whichever: an answer that was there counts no more.
    void alTeclear();
    // Packs Text10 and sends it.
    Tarea<> enviar();
    // Communication event of MSComm3.
    void alComunicar();

   private:
    void terminar();

    Enlace& enlace_;
    EstadoConfig& config_;
    SerieEmpacada serie_{};
    std::string enviada_;  // as it was typed
    bool entera_ = false;  // every byte of the exchange went out so far
};

}  // namespace telvane
