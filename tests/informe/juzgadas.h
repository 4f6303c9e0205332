// A station's samples for the tests of the report.
#pragma once

#include <functional>
#include <vector>

#include "calidad/marcador.h"
#include "informe/informe.h"

namespace telvane::informe {

inline const Instante kInicio = instante({.anio = 2018, .mes = 11, .dia = 20});

// Good weather: no two neighbours are equal for long, and nothing jumps.
inline Medidas buenas(int i = 0) {
    Medidas m;
    m.humedad = 50 + i % 7;
    m.temperatura = 180 + i % 9 * 7;
    m.crudoDirViento = 40;
    m.dirViento = 900;
    m.velViento = 100 + i % 6 * 8;
    m.radSolar = 40;
    m.presion = 908 + i % 2;
    return m;
}

inline std::vector<Observacion> serie(int cuantas, std::chrono::seconds paso = std::chrono::minutes(10),
                                      Instante desde = kInicio) {
    std::vector<Observacion> todas;
    for (int i = 0; i < cuantas; ++i) {
        auto m = buenas(i);
        // A vane that moves.
        m.crudoDirViento = static_cast<std::uint8_t>(10 * (1 + i % 16));
        m.dirViento = m.crudoDirViento * 45 / 2;
        todas.push_back({.instante = desde + i * paso, .medidas = m});
    }
    return todas;
}

inline Informe informeDe(const std::vector<Observacion>& observaciones, const Plazo& plazo) {
    Informe informe(plazo);
    Marcador marcador(limitesUsuales(), [&](const Juzgada& j) { informe.agregar(j); });
    for (const auto& o : observaciones) marcador.agregar(o);
    marcador.terminar();
    informe.terminar();
    return informe;
}
inline Informe informeDe(const std::vector<Observacion>& observaciones) {
    return informeDe(observaciones, {.desde = observaciones.front().instante,
                                     .hasta = observaciones.back().instante + std::chrono::seconds(1)});
}

}  // namespace telvane::informe
