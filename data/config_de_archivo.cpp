#include "data/config_de_archivo.h"

#include <utility>

#include "loggerconfig/datos_config.h"

namespace telvane {

ConfigDeArchivo configDeArchivo(std::span<const std::uint8_t> imagen, const LoggerLeido& leido) {
    if (!leido.texto.empty()) return {leido.texto, llevaEvaporacion(leido.numeroSerie)};
    auto cabecera = leerCabecera(imagen);
    const bool evaporacion = cabecera.llevaEvaporacion();
    return {std::move(cabecera.texto), evaporacion};
}

}  // namespace telvane
