#include "historico/observacion.h"

#include <algorithm>
#include <map>
#include <set>

#include "historico/limites_aviso.h"
#include "historico/textos_historico.h"

namespace telvane {

namespace {

// Nothing is looked for where there is none at all.
void mirarLoNuevo(Lectura& lectura, Observada& o) {
    if (o.ultimas.empty()) return;
    const auto& ultima = o.ultimas.back().imagen;
    const auto* antes = miradaAnterior(o.ultimas);
    if (!ultima.desde) return;
    if (o.estacion.resumen.huecos > 0) {
        const auto intervalo = datosDe(o.estacion).intervalo;
        o.huecosNuevos = lectura.huecosDesde(o.estacion, antes ? antes->hasta : std::nullopt, ultima,
                                             std::chrono::minutes(intervalo.value_or(1)));
    }
    if (o.estacion.resumen.conflictos > 0)
        o.conflictosNuevos = lectura.conflictosDeMas(o.estacion, ultima, antes);
}

std::optional<Incorporada> ultimaLlegada(Lectura& lectura, const EstacionGuardada& estacion,
                                         Incorporada ahora) {
    const auto hasta = ahora + limites_aviso::kIncorporadaFutura;
    if (estacion.resumen.incorporada <= hasta) return estacion.resumen.incorporada;
    std::optional<Incorporada> ultima;
    for (const auto& ficha : lectura.imagenes(estacion)) {
        if (ficha.incorporada <= hasta) ultima = std::max(ultima, std::optional(ficha.incorporada));
    }
    return ultima;
}

std::set<Huella> huellasDe(Lectura& lectura, const EstacionGuardada& estacion) {
    std::set<Huella> huellas;
    for (const auto& ficha : lectura.imagenes(estacion)) huellas.insert(ficha.huella);
    return huellas;
}

}  // namespace

std::vector<Observada> observar(Lectura& lectura, Incorporada ahora) {
    std::vector<Observada> flota;
    auto ultimas = lectura.ultimas();
    for (auto& estacion : lectura.estaciones()) {
        auto& o = flota.emplace_back();
        o.ultimas = std::move(ultimas[estacion.id]);
        o.llego = ultimaLlegada(lectura, estacion, ahora);
        o.estacion = std::move(estacion);
        mirarLoNuevo(lectura, o);
    }
    return flota;
}

void compararCon(std::vector<Observada>& flota, Lectura& lectura, Lectura& otra) {
    std::map<std::string, EstacionGuardada> suyas;
    for (auto& estacion : otra.estaciones()) suyas.emplace(estacion.nombre, std::move(estacion));
    for (auto& o : flota) {
        const auto suya = suyas.find(o.estacion.nombre);
        if (suya == suyas.end()) {
            o.sinCopiar = o.estacion.resumen.imagenes;
            continue;
        }
        const auto hay = huellasDe(otra, suya->second);
        o.sinCopiar = std::ranges::count_if(lectura.imagenes(o.estacion),
                                            [&](const auto& ficha) { return !hay.contains(ficha.huella); });
    }
}

}  // namespace telvane
