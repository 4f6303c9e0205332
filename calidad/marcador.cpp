#include "calidad/marcador.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <utility>

#include "data/conversiones.h"

namespace telvane {

namespace {

template <typename Para>
void cadaCanal(Para&& para) {
    for (std::size_t i = 0; i < kCanales; ++i) para(static_cast<Canal>(i), i);
}

// The widest whole number of the channel within a limit: towards it from inside.
std::int32_t haciaAbajo(Millonesimas limite, Millonesimas escala) {
    const auto entero = limite / escala - (limite % escala < 0 ? 1 : 0);
    return static_cast<std::int32_t>(std::clamp<Millonesimas>(entero, INT32_MIN, INT32_MAX));
}
std::int32_t haciaArriba(Millonesimas limite, Millonesimas escala) {
    return -haciaAbajo(std::max(-limite, -Millonesimas{INT32_MAX} * escala), escala);
}
Millonesimas escalaDe(Canal canal) {
    return enMillonesimas(1, canal);
}

// What a converter reads whose input hangs on one of its rails, and what an erased memory holds.
template <std::int32_t (*convertir)(std::int32_t)>
bool enUnTope(std::int32_t valor) {
    constexpr std::array<std::int32_t, 3> kTopes = {convertir(0), convertir(1023), convertir(65535)};
    return std::ranges::find(kTopes, valor) != kTopes.end();
}

}  // namespace

Marcador::Marcador(const Limites& limites, std::function<void(const Juzgada&)> alJuzgar)
    : limites_(limites),
      alJuzgar_(std::move(alJuzgar)),
      ritmo_([this](const Cadencia& paso) { alSaberPaso(paso); }) {
    cadaCanal([&](Canal canal, std::size_t i) {
        const auto& rango = limites_.rango[i];
        topes_.menor[i] = rango ? haciaArriba(rango->desde, escalaDe(canal)) : INT32_MIN;
        topes_.mayor[i] = rango ? haciaAbajo(rango->hasta, escalaDe(canal)) : INT32_MAX;
        topes_.salto[i] = limites_.salto[i] ? haciaAbajo(*limites_.salto[i], escalaDe(canal)) : INT32_MAX;
        const auto& limite = limites_.fijo[i];
        if (!limite) return;
        const bool veleta = canal == Canal::dirViento;
        detenidos_.push_back(
            {.canal = canal,
             .escala = escalaDe(canal),
             .fijo = Fijo(*limite, veleta ? Fijo::Amplitud::hastaElla : Fijo::Amplitud::menor,
                          canal == Canal::velViento ? Fijo::Media::mayor : Fijo::Media::indistinta),
             .soloConViento = veleta ? std::optional(limite->viento) : std::nullopt});
    });
}

void Marcador::agregar(const Observacion& observacion) {
    const bool nueva = cola_.empty() || cola_.back().observacion.instante != observacion.instante;
    cola_.push_back({.observacion = observacion, .marcas = {}, .paso = {}});
    if (nueva) ritmo_.agregar(observacion.instante);
}

void Marcador::terminar() {
    ritmo_.terminar();
    for (auto& detenido : detenidos_) detenido.fijo.cortar();
    soltar();
    vecina_.reset();
}

// All samples of the stamp are in the queue: a later stamp has been seen, or the end.
void Marcador::alSaberPaso(const Cadencia& paso) {
    huecoDesdeVecina_ = huecoDesdeVecina_ || paso.hueco;
    while (juzgadas_ < cola_.size() && cola_[juzgadas_].observacion.instante == paso.instante) {
        cola_[juzgadas_].paso = paso;
        juzgar(cola_[juzgadas_]);
        ++juzgadas_;
    }
    if (juzgadas_ < soltarCon_) return;
    soltar();
    soltarCon_ = juzgadas_ + kDeUnaVez;
}

void Marcador::juzgar(Juzgada& juzgada) {
    juzgarRango(juzgada);
    if (juzgada.observacion.conflicto) {
        juzgada.marcas.ponerConflicto();
        return;
    }
    if (juzgada.paso.hueco) juzgada.marcas.ponerHueco();
    juzgarSalto(juzgada);
    juzgarFijo(juzgada);
    vecina_ = juzgada.observacion;
    huecoDesdeVecina_ = false;
}

// Rain falls in the interval, the limit is one of a quarter of an hour.
void Marcador::medirLluvia(int intervalo) {
    constexpr auto kLluvia = static_cast<std::size_t>(Canal::lluvia);
    topes_.intervalo = intervalo;
    const auto& limite = limites_.rango[kLluvia];
    if (!limite) return;
    const auto escala = escalaDe(Canal::lluvia) * kTiempoDeLluvia;
    topes_.menor[kLluvia] = haciaArriba(limite->desde * intervalo, escala);
    topes_.mayor[kLluvia] = haciaAbajo(limite->hasta * intervalo, escala);
}

void Marcador::juzgarRango(Juzgada& juzgada) {
    const auto& medidas = juzgada.observacion.medidas;
    if (juzgada.paso.intervalo != topes_.intervalo) medirLluvia(juzgada.paso.intervalo);
    const auto valores = valoresDe(medidas);
    cadaCanal([&](Canal canal, std::size_t i) {
        if (valores[i] < topes_.menor[i] || valores[i] > topes_.mayor[i])
            juzgada.marcas.poner(canal, Marca::rango);
    });
    if (enUnTope<conversiones::temperatura>(medidas.temperatura)) {
        juzgada.marcas.poner(Canal::temperatura, Marca::rango);
    }
    if (enUnTope<conversiones::presion>(medidas.presion)) juzgada.marcas.poner(Canal::presion, Marca::rango);
}

void Marcador::juzgarSalto(Juzgada& juzgada) const {
    if (!vecina_ || juzgada.observacion.instante - vecina_->instante > kVecindadDeSalto) return;
    const auto valores = valoresDe(juzgada.observacion.medidas);
    const auto suyos = valoresDe(vecina_->medidas);
    cadaCanal([&](Canal canal, std::size_t i) {
        if (std::abs(valores[i] - suyos[i]) > topes_.salto[i]) juzgada.marcas.poner(canal, Marca::salto);
    });
}

void Marcador::juzgarFijo(const Juzgada& juzgada) {
    const auto& medidas = juzgada.observacion.medidas;
    const auto posicion = primera_ + juzgadas_;
    const auto valores = valoresDe(medidas);
    const auto viento = enMillonesimas(medidas.velViento, Canal::velViento);
    for (auto& detenido : detenidos_) {
        if (huecoDesdeVecina_) detenido.fijo.cortar();
        if (detenido.soloConViento && viento <= *detenido.soloConViento) {
            detenido.fijo.cortar();
            continue;
        }
        const auto hallado =
            detenido.fijo.agregar(posicion, juzgada.observacion.instante,
                                  valores[static_cast<std::size_t>(detenido.canal)] * detenido.escala);
        if (!hallado) continue;
        // What has come out already was known to stand still when it did.
        for (auto p = std::max(hallado->desde, primera_); p <= hallado->hasta; ++p) {
            auto& una = cola_[p - primera_];
            if (!una.observacion.conflicto) una.marcas.poner(detenido.canal, Marca::fijo);
        }
    }
}

void Marcador::soltar() {
    auto hasta = primera_ + juzgadas_;
    for (const auto& detenido : detenidos_) {
        hasta = std::min(hasta, detenido.fijo.abierta().value_or(hasta));
    }
    for (; primera_ < hasta; ++primera_, --juzgadas_) {
        alJuzgar_(cola_.front());
        cola_.pop_front();
    }
}

}  // namespace telvane
