// The tables of the page.
#pragma once

#include <string>

#include "informe/canales.h"
#include "informe/clima.h"
#include "informe/informe.h"

namespace telvane::informe {

// Channels down, extremes and counts across.
std::string tablaDeExtremos(const Informe& informe, bool evaporacion);
std::string tablaDeMeses(const Informe& informe, bool evaporacion);
std::string tablaDeDias(const Informe& informe, bool evaporacion);
// By hours, days or months, as long as the period is.
std::string tablaDeCanal(const CanalInformado& canal, const Informe& informe);
std::string tablaDeRosa(const Informe& informe);
std::string tablaDeClima(const ClimaDelMes& clima);
std::string tablaDeMarcas(const Informe& informe, bool evaporacion);
std::string tablaDeImagenes(const EstacionInformada& estacion);

}  // namespace telvane::informe
