#include "data/estado_datos.h"

namespace telvane {

void bloquearOperaciones(FormaInicio& forma) {
    for (auto* boton : {&forma.Command43, &forma.Command33, &forma.Command13, &forma.Command2,
                        &forma.Command3, &forma.configuracion, &forma.Command4}) {
        boton->enabled = false;
    }
}

void liberarOperaciones(FormaInicio& forma) {
    for (auto* boton :
         {&forma.Command43, &forma.Command13, &forma.Command2, &forma.configuracion, &forma.Command4}) {
        boton->enabled = true;
    }
}

}  // namespace telvane
