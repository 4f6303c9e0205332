#include "loggerconfig/estado_config.h"

#include "loggerconfig/datos_config.h"

namespace telvane {

void mostrarSoloIntervalo(FormaInicio& forma, std::uint8_t codigo) {
    const auto indice = indiceIntervalo(codigo);
    if (!indice) return;
    const auto opciones = forma.opciones();
    for (std::size_t i = 0; i < opciones.size(); ++i) {
        opciones[i]->value = i == *indice ? 1 : 0;
        opciones[i]->visible = i == *indice;
    }
}

}  // namespace telvane
