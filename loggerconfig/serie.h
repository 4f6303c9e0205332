// Writing the serial number from Text10: the keys, the exchange on MSComm3, and the texts of Label1.
#pragma once

#include "link/enlace.h"
#include "loggerconfig/estado_config.h"
#include "loggerconfig/pasos_serie.h"
#include "platform/tarea.h"

namespace telvane {

inline constexpr int kTeclaRetroceso = 8;
inline constexpr int kTeclaIntro = 13;

class EscrituraSerie {
   public:
    EscrituraSerie(Enlace& enlace, EstadoConfig& config) : enlace_(enlace), config_(config) {}

    // Key press in Text10: only digits, Backspace and Enter pass; any other becomes 0. True: Enter, send.
    bool alTeclear(int& tecla);
    // Packs Text10 and sends it.
    Tarea<> enviar();
    // Communication event of MSComm3.
    void alComunicar();

   private:
    void terminar();

    Enlace& enlace_;
    EstadoConfig& config_;
    SerieEmpacada serie_{};
};

}  // namespace telvane
