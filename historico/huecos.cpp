#include "historico/huecos.h"

#include <algorithm>
#include <iterator>

#include "serie_temporal/ritmo.h"

namespace telvane {

std::int64_t contarHuecos(const std::vector<Instante>& sellos, Instante desde, Instante hasta) {
    std::int64_t cuantos = 0;
    Ritmo ritmo([&](const Cadencia& paso) {
        if (paso.hueco && paso.instante >= desde && paso.instante <= hasta) ++cuantos;
    });
    for (const auto sello : sellos) ritmo.agregar(sello);
    ritmo.terminar();
    return cuantos;
}

std::int64_t huecosDeMas(const SellosAlrededor& entorno, const std::vector<Instante>& nuevos) {
    if (nuevos.empty()) return 0;
    std::vector<Instante> antes = entorno.antes;
    antes.insert(antes.end(), entorno.medio.begin(), entorno.medio.end());
    antes.insert(antes.end(), entorno.despues.begin(), entorno.despues.end());
    std::vector<Instante> ahora;
    ahora.reserve(antes.size() + nuevos.size());
    std::merge(antes.begin(), antes.end(), nuevos.begin(), nuevos.end(), std::back_inserter(ahora));

    // Beyond ten stamps nothing changes.
    const auto& a = entorno.antes;
    const auto& d = entorno.despues;
    const auto desde = a.empty() ? nuevos.front() : a[a.size() - std::min(a.size(), Ritmo::kVecinos)];
    const auto hasta = d.empty() ? nuevos.back() : d[std::min(d.size(), Ritmo::kVecinos) - 1];
    return contarHuecos(ahora, desde, hasta) - contarHuecos(antes, desde, hasta);
}

}  // namespace telvane
