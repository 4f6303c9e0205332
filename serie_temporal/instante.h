// The moment that a sample's stamp names: the logger's own local time, as it was written, without a zone.
#pragma once

#include <chrono>
#include <string>

#include "data/muestra.h"
#include "data/sello.h"

namespace telvane {

using Instante = std::chrono::local_seconds;

inline Instante instante(const Fecha& f, const Hora& h = {}) {
    using namespace std::chrono;
    return local_days{year{f.anio} / f.mes / f.dia} + hours{h.hora} + minutes{h.minuto} + seconds{h.segundo};
}
// Of a record with a good stamp.
inline Instante instanteDe(BytesMuestraConst registro) {
    return instante(sello::fecha(registro), sello::hora(registro));
}

inline Fecha fechaDe(Instante momento) {
    const std::chrono::year_month_day dia{std::chrono::floor<std::chrono::days>(momento)};
    return {static_cast<int>(dia.year()), static_cast<int>(static_cast<unsigned>(dia.month())),
            static_cast<int>(static_cast<unsigned>(dia.day()))};
}
inline Hora horaDe(Instante momento) {
    const std::chrono::hh_mm_ss hora{momento - std::chrono::floor<std::chrono::days>(momento)};
    return {static_cast<int>(hora.hours().count()), static_cast<int>(hora.minutes().count()),
            static_cast<int>(hora.seconds().count())};
}

}  // namespace telvane
