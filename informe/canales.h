// The channels as the report shows them, in the order of its charts.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "calidad/marcas.h"
#include "platform/contados.h"

namespace telvane::informe {

enum class Dibujo : std::uint8_t {
    banda,   // from minimum to maximum, and the mean
    puntos,  // directions
    barras   // sums with their running total
};

struct CanalInformado {
    Canal canal;
    std::string_view id;
    std::string_view nombre;
    std::string_view unidad;
    Dibujo dibujo = Dibujo::banda;
    bool conMinimo = true;  // whether its chart begins at it, and not at nothing
};

inline constexpr std::array<CanalInformado, kCanales> kCanalesInformados = {{
    {.canal = Canal::temperatura, .id = "temperatura", .nombre = "Temperatura", .unidad = "ºC"},
    {.canal = Canal::humedad, .id = "humedad", .nombre = "Humedad relativa", .unidad = "%"},
    {.canal = Canal::presion, .id = "presion", .nombre = "Presión atmosférica", .unidad = "kPa"},
    {.canal = Canal::velViento,
     .id = "viento",
     .nombre = "Velocidad del viento",
     .unidad = "km/h",
     .conMinimo = false},
    {.canal = Canal::dirViento,
     .id = "direccion",
     .nombre = "Dirección del viento",
     .unidad = "º",
     .dibujo = Dibujo::puntos},
    {.canal = Canal::radSolar,
     .id = "radiacion",
     .nombre = "Radiación solar",
     .unidad = "kW/m²",
     .conMinimo = false},
    {.canal = Canal::lluvia,
     .id = "lluvia",
     .nombre = "Lluvia",
     .unidad = "mm",
     .dibujo = Dibujo::barras,
     .conMinimo = false},
    {.canal = Canal::evaporacion,
     .id = "evaporacion",
     .nombre = "Evaporación",
     .unidad = "mm",
     .dibujo = Dibujo::barras,
     .conMinimo = false},
}};

constexpr int decimalesDe(Canal canal) {
    return kDecimalesCanal[static_cast<std::size_t>(canal)];
}

// How each mark is called and drawn, in the order of Marca.
struct MarcaInformada {
    std::string_view id;
    std::string_view nombre;
    std::string_view varios;
    std::string_view forma;
    std::string_view explicacion;
};
inline constexpr std::array<MarcaInformada, kMarcas> kMarcasInformadas = {{
    {"rango", "fuera de rango", "fuera de rango", "cuadrado",
     "un valor que el tiempo no da; queda fuera de extremos, medias y sumas"},
    {"salto", "salto", "saltos", "anillo", "cambia más de lo creíble desde la muestra anterior"},
    {"fijo", "fijo", "fijos", "punto", "no se mueve durante horas"},
}};

// "1 salto", "3 saltos".
inline std::string cuantas(std::int64_t cuenta, const MarcaInformada& marca) {
    return contados(cuenta, marca.nombre, marca.varios);
}

}  // namespace telvane::informe
