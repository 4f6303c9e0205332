// The stretch of time that a report is about.
#pragma once

#include <optional>

#include "serie_temporal/instante.h"

namespace telvane::informe {

struct Plazo {
    Instante desde{};
    Instante hasta{};  // excluded
    bool contiene(Instante momento) const { return desde <= momento && momento < hasta; }
    std::chrono::seconds dura() const { return hasta - desde; }
    bool operator==(const Plazo&) const = default;
};

struct Mes {
    int anio = 2000;
    int mes = 1;
    bool operator==(const Mes&) const = default;
    int dias() const {
        const auto ultimo = std::chrono::year{anio} / mes / std::chrono::last;
        return static_cast<int>(static_cast<unsigned>(ultimo.day()));
    }
    Mes siguiente() const { return mes == 12 ? Mes{anio + 1, 1} : Mes{anio, mes + 1}; }
    Plazo plazo() const {
        return {.desde = instante({.anio = anio, .mes = mes, .dia = 1}),
                .hasta = instante({.anio = siguiente().anio, .mes = siguiente().mes, .dia = 1})};
    }
};
inline Mes mesDe(Instante momento) {
    const auto fecha = fechaDe(momento);
    return {fecha.anio, fecha.mes};
}

}  // namespace telvane::informe
