// The strip of the window's surface on which the program prints: newest line last, older ones scroll off.
#pragma once

#include <string>

#include "ui/formulario.h"
#include "ui/qt/vista_lineas.h"

namespace telvane {

class FranjaDiagnostico final : public VistaLineas {
   public:
    // The form outlives the strip.
    FranjaDiagnostico(const Formulario& forma, QWidget* padre);

    // Shows what the form has printed up to now.
    void refrescar();

   private:
    const Formulario& forma_;
    std::string junto_;
};

}  // namespace telvane
