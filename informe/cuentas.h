// What is counted of the samples of an hour, a day, a month or a period. Every rule of the report's
// statistics stands here:
//
// - A day runs from 00:00 included to 24:00 excluded, in the logger's own time.
// - A value marked `rango` enters no extreme, mean or sum; how many is counted. `salto` and `fijo` enter, and
//   what they entered is marked: an extreme when it is one of them.
// - Of equal extremes the first one counts.
// - Wind has a direction from 1.8 km/h on (0.5 m/s, WMO-No. 8, Volume I, chapter 5); below it is calm.
// - What counts samples counts all of them: the rose, the calms and the prevailing sector, which is the
//   one with most samples; of equal ones the first from north to east. A speed marked `rango` stands
//   where it says.
// - What weighs them does not: the mean direction is that of the mean wind vector (WMO-No. 8, Volume I,
//   chapter 5), where each direction weighs as much as its wind, and one whose speed is marked `rango`
//   nothing.
// - A stamp is expected once, and is there once, however many records of it count.
// - A month's mean is incomplete when more than 3 of its days in a row, or more than 5 in all, have no value
//   (WMO-No. 1203, Guidelines on the Calculation of Climate Normals). A period's is when one of its months
//   is; of that month only the days of the period are asked for.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

#include "calidad/marcador.h"

namespace telvane::informe {

inline constexpr std::int32_t kCalma = 18;  // tenths of km/h: from here on wind has a direction

// Clockwise from north.
inline constexpr std::size_t kRumbos = 16;
inline constexpr std::array<std::string_view, kRumbos> kNombresRumbo = {
    "N", "NNE", "NE", "ENE", "E", "ESE", "SE", "SSE", "S", "SSO", "SO", "OSO", "O", "ONO", "NO", "NNO"};
// Of the byte that the logger keeps; it counts towards the west. 0 and 161 to 255 have none.
constexpr std::optional<std::size_t> rumboDe(std::uint8_t crudo) {
    if (crudo == 0 || crudo > 160) return std::nullopt;
    const std::size_t haciaElOeste = (crudo + 5U) / 10U % kRumbos;
    return (kRumbos - haciaElOeste) % kRumbos;
}
// Degrees clockwise from north, 0 to below 360, of a byte that has a direction.
constexpr double gradosDesdeElNorte(std::uint8_t crudo) {
    return (160 - crudo) * 2.25;
}

// Classes of wind speed in the rose: from kCalma to the first, ..., above the last; tenths of km/h.
inline constexpr std::array<std::int32_t, 3> kClasesViento = {100, 200, 400};
inline constexpr std::size_t kClases = kClasesViento.size() + 1;
std::size_t claseDe(std::int32_t velocidad);

struct CuentaCanal {
    std::int32_t minimo = 0;
    std::int32_t maximo = 0;
    Instante cuandoMinimo{};
    Instante cuandoMaximo{};
    std::int64_t suma = 0;
    std::uint32_t valores = 0;          // that entered
    std::uint32_t valoresMarcados = 0;  // of them
    std::array<std::uint32_t, kMarcas> marcados{};
    bool minimoMarcado = false;
    bool maximoMarcado = false;

    std::uint32_t fueraDeRango() const { return marcados[static_cast<std::size_t>(Marca::rango)]; }
    // Whether values marked salto or fijo entered.
    bool conMarcados() const { return valoresMarcados > 0; }
    void agregar(std::int32_t valor, Instante cuando, bool marcado) {
        if (valores == 0 || valor < minimo) {
            minimo = valor;
            cuandoMinimo = cuando;
            minimoMarcado = marcado;
        }
        if (valores == 0 || valor > maximo) {
            maximo = valor;
            cuandoMaximo = cuando;
            maximoMarcado = marcado;
        }
        suma += valor;
        ++valores;
        if (marcado) ++valoresMarcados;
    }
    void agregar(const CuentaCanal& otra);
};

struct Cuentas {
    std::array<CuentaCanal, kCanales> canales;
    std::uint32_t muestras = 0;
    std::uint32_t sellos = 0;      // distinct stamps
    std::uint32_t faltan = 0;      // stamps that the interval in force would have had besides
    std::uint32_t huecos = 0;      // by the stamp that ends them
    std::uint32_t conflictos = 0;  // stamps
    std::uint32_t marcadas = 0;    // samples with a mark of a channel
    std::int64_t segundos = 0;     // that the samples stand for

    std::array<std::uint32_t, kRumbos> rumbos{};
    std::uint32_t calmas = 0;
    std::uint32_t sinRumbo = 0;
    // Sums of the wind vectors, tenths of km/h by millionths.
    std::int64_t haciaElNorte = 0;
    std::int64_t haciaElEste = 0;

    const CuentaCanal& operator[](Canal canal) const { return canales[static_cast<std::size_t>(canal)]; }
    CuentaCanal& operator[](Canal canal) { return canales[static_cast<std::size_t>(canal)]; }

    // primeraDelSello: whether no sample of its stamp was counted before.
    void agregar(const Juzgada& juzgada, bool primeraDelSello);
    void agregar(const Cuentas& otras);

    std::uint32_t esperadas() const { return sellos + faltan; }
    bool conAgujeros(Canal canal) const { return faltan > 0 || (*this)[canal].fueraDeRango() > 0; }
    // In the channel's unit.
    std::optional<double> media(Canal canal) const;
    std::optional<std::size_t> rumboDominante() const;
    // Degrees clockwise from north, 0 to 360.
    std::optional<double> direccionMedia() const;
};

}  // namespace telvane::informe
