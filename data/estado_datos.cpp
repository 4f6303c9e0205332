#include "data/estado_datos.h"

namespace telvane {

namespace {

std::array<Control*, kOperaciones> operaciones(FormaInicio& forma) {
    return {&forma.Command43, &forma.Command33,     &forma.Command13, &forma.Command2,
            &forma.Command3,  &forma.configuracion, &forma.Command4};
}

}  // namespace

BotonesHabilitados bloquearOperaciones(FormaInicio& forma) {
    BotonesHabilitados antes{};
    for (std::size_t i = 0; auto* boton : operaciones(forma)) {
        antes[i++] = boton->enabled();
        boton->enabled = false;
    }
    return antes;
}

void devolverOperaciones(FormaInicio& forma, const BotonesHabilitados& antes, bool editando) {
    for (std::size_t i = 0; auto* boton : operaciones(forma)) {
        if (antes[i++]) boton->enabled = true;
    }
    forma.Command3.enabled = forma.Command3.enabled() && editando;
}

void liberarOperaciones(FormaInicio& forma) {
    for (auto* boton :
         {&forma.Command43, &forma.Command13, &forma.Command2, &forma.configuracion, &forma.Command4}) {
        boton->enabled = true;
    }
}

}  // namespace telvane
