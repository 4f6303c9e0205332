// A month as climate reports show it, day by day: page and text say the same.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "informe/estadistica.h"

namespace telvane::informe {

// Degree-days count the day's mean against this, tenths of ºC (65 ºF).
inline constexpr std::int64_t kBaseGradosDia = 183;

struct DiaDeClima {
    int dia = 1;
    const Cuentas* cuentas = nullptr;  // none: the day is not in the period
    bool lluviaConAgujeros = false;
    std::optional<double> calefaccion;  // degree-days
    std::optional<double> refrigeracion;
};

struct ClimaDelMes {
    const MesContado* mes = nullptr;
    std::vector<DiaDeClima> dias;  // all of the calendar month
    double calefaccion = 0;
    double refrigeracion = 0;
    // Days.
    int maximaDesde32 = 0;
    int maximaHasta0 = 0;
    int minimaHasta0 = 0;
    int minimaHasta18Bajo0 = 0;
    int lluviaDesde02 = 0;
    int lluviaDesde2 = 0;
    int lluviaDesde20 = 0;
    std::optional<int> diaMasLluvioso;
};

ClimaDelMes climaDe(const Estadistica& estadistica, const MesContado& mes);

}  // namespace telvane::informe
