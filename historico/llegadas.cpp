#include "historico/llegadas.h"

#include <algorithm>
#include <tuple>

#include "historico/limites_aviso.h"

namespace telvane {

namespace {

namespace limites = limites_aviso;
using std::chrono::minutes;
using std::chrono::seconds;

// Between the two the oldest samples went, and what is left overlaps: nobody erased it.
bool sobrescribio(const FichaImagen& antes, const FichaImagen& ahora) {
    return antes.desde && ahora.desde && *ahora.desde > *antes.desde && *ahora.desde <= *antes.hasta;
}

// A full memory that begins anew somewhere and still takes samples.
bool daLaVuelta(const FichaImagen& imagen, minutes intervalo) {
    return imagen.retrocesos > 0 && imagen.reloj && *imagen.reloj - *imagen.hasta <= 2 * intervalo;
}

}  // namespace

void ordenarLlegadas(Llegadas& llegadas) {
    const auto lugar = [](const Llegada& l) {
        return std::tuple(l.momento(), l.imagen.reloj, l.imagen.huella);
    };
    std::ranges::sort(llegadas, {}, lugar);
    const auto repetidas = std::unique(
        llegadas.begin(), llegadas.end(),
        [](const Llegada& una, const Llegada& otra) { return una.imagen.huella == otra.imagen.huella; });
    llegadas.erase(repetidas, llegadas.end());
    if (llegadas.size() > limites::kUltimas)
        llegadas.erase(llegadas.begin(), llegadas.end() - static_cast<std::ptrdiff_t>(limites::kUltimas));
}

seconds ritmoDe(const Llegadas& ultimas) {
    std::vector<seconds> pasos;
    for (std::size_t i = 1; i < ultimas.size(); ++i) {
        const auto paso = ultimas[i].momento() - ultimas[i - 1].momento();
        if (paso >= limites::kMismaVisita) pasos.push_back(paso);
    }
    if (pasos.empty()) return limites::kRitmoSupuesto;
    const auto medio = pasos.begin() + static_cast<std::ptrdiff_t>(pasos.size() / 2);
    std::nth_element(pasos.begin(), medio, pasos.end());
    return *medio;
}

const FichaImagen* ultimaEntera(std::span<const Llegada> ultimas) {
    const auto entera =
        std::find_if(ultimas.rbegin(), ultimas.rend(), [](const auto& l) { return !l.imagen.parcial(); });
    return entera == ultimas.rend() ? nullptr : &entera->imagen;
}

const FichaImagen* miradaAnterior(const Llegadas& ultimas) {
    if (ultimas.empty()) return nullptr;
    return ultimaEntera(std::span(ultimas).first(ultimas.size() - 1));
}

std::optional<PronosticoMemoria> pronosticar(const Llegadas& ultimas, minutes intervalo) {
    const auto* imagen = ultimaEntera(ultimas);
    if (imagen == nullptr || !imagen->hasta) return std::nullopt;
    const auto* antes = imagen == &ultimas.back().imagen ? miradaAnterior(ultimas) : nullptr;
    PronosticoMemoria p;
    p.libres = std::max<std::int64_t>(limites::kRanurasDeMuestras - imagen->muestras, 0);
    p.sobrescribe = (antes != nullptr && sobrescribio(*antes, *imagen)) ||
                    (p.libres == 0 && daLaVuelta(*imagen, intervalo));
    p.plazo = (p.sobrescribe ? imagen->muestras : p.libres) * intervalo;
    p.llena = *imagen->hasta + (p.sobrescribe ? minutes(0) : p.plazo);
    return p;
}

}  // namespace telvane
