// The charts: SVG that needs no script. Labels keep their size and strokes their width, whatever the width of
// the page.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "informe/canales.h"
#include "informe/columnas_grafico.h"
#include "informe/ejes.h"
#include "informe/estadistica.h"

namespace telvane::informe {

// One bar of rain or evaporation.
struct Barra {
    Plazo plazo;
    std::int64_t suma = 0;  // in the channel's whole numbers
};
// By hours, days or months, as long as the period is.
std::vector<Barra> barrasDe(const Estadistica& estadistica, Canal canal);

// alternativo: what the chart says, in words.
std::string graficoDeCanal(const CanalInformado& canal, const Estadistica& estadistica,
                           const ColumnasGrafico& columnas, const std::string& alternativo);

// North up, east right. alternativo as above.
std::string rosaDeVientos(const Estadistica& estadistica, const std::string& alternativo);

// From the least to the greatest of what is drawn on one scale.
struct Recorrido {
    std::int32_t minimo = INT32_MAX;
    std::int32_t maximo = INT32_MIN;
    void agregar(std::int32_t valor);
};
// A small line without axes: one value a place, broken where there is none. recorrido: of all the lines of a
// table, so that a quiet day looks quiet.
std::string lineaMinima(const std::vector<std::optional<std::int32_t>>& valores, const Recorrido& recorrido);

// The same data for the scripts, as JSON.
std::string datosDeGraficos(const Estadistica& estadistica, const ColumnasGrafico& columnas,
                            bool evaporacion);

}  // namespace telvane::informe
