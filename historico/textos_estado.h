// What `estado` says of a fleet, for people, for programs and for a node exporter.
#pragma once

#include <string>
#include <vector>

#include "historico/avisos.h"

namespace telvane {

struct EstadoEstacion {
    Observada observada;
    std::vector<AvisoEstacion> avisos;
};

std::string estadoParaPersonas(const std::vector<EstadoEstacion>& estaciones);
// {"estaciones":[{"serie",...,"avisos":[{"codigo","texto"}]}]}
std::string estadoJson(const std::vector<EstadoEstacion>& estaciones);
// The text format of a node exporter's folder: each warning that there is, of each station, as 0 or 1.
std::string estadoPrometheus(const std::vector<EstadoEstacion>& estaciones);

}  // namespace telvane
