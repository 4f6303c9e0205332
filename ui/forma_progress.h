// The communication progress dialog.
#pragma once

#include "ui/formulario.h"

namespace telvane {

struct FormaProgress final : Formulario {
    FormaProgress() : Formulario("progress", "Estado de Comunicacion") {}

    Control ProgressBar1{*this, "ProgressBar1", Clase::progreso, {.nombreAccesible = "Progreso"}};
    Control Label1{*this, "Label1", Clase::rotulo, {.caption = "00:00:00"}};
    Control Command45{*this,
                      "Command45",
                      Clase::boton,
                      {.caption = "Cancel", .hint = "Si cancela se interrunpira la comunicacion"}};

    // Shows the dialog with its bar, which start-up hides while the dialog is only loaded.
    void mostrarConBarra(int maximo) {
        mostrar();
        ProgressBar1.visible = true;
        ProgressBar1.maximum = maximo;
    }
};

}  // namespace telvane
