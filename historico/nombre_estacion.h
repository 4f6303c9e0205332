// What a station is called: the serial number of its logger, or that and a name: 02080050/norte.
#pragma once

#include <string>
#include <string_view>

namespace telvane {

// The 8 digits, as the programs show them.
bool esSerie(const std::string& texto);
bool esNombreDe(std::string_view nombre, std::string_view serie);
// What stands beside the serial number, whatever that is; empty where there is none that can.
std::string nombreJuntoALaSerie(const std::string& nombre);

// What one is called beside its number whose name is lost. Nobody gives it to --como, which takes no dot.
std::string nombreRecuperado(int vez);
bool esNombreRecuperado(std::string_view junto);

// Whether the loggers of this number measure evaporation.
bool esDeVariante(const std::string& serie);

}  // namespace telvane
