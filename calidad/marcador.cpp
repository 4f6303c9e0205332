#include "calidad/marcador.h"

#include <algorithm>
#include <array>
#include <utility>

#include "data/conversiones.h"

namespace telvane {

namespace {

template <typename Para>
void cadaCanal(Para&& para) {
    for (std::size_t i = 0; i < kCanales; ++i) para(static_cast<Canal>(i), i);
}

Millonesimas valorExacto(const Medidas& medidas, Canal canal) {
    return enMillonesimas(valorDe(medidas, canal), canal);
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
      ritmo_([this](const Paso& paso) { alSaberPaso(paso); }) {
    cadaCanal([&](Canal canal, std::size_t i) {
        const auto& limite = limites_.fijo[i];
        if (!limite) return;
        const bool veleta = canal == Canal::dirViento;
        detenidos_.push_back(
            {.canal = canal,
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
    huecoDesdeVecina_ = false;
}

// All samples of the stamp are in the queue: a later stamp has been seen, or the end.
void Marcador::alSaberPaso(const Paso& paso) {
    huecoDesdeVecina_ = huecoDesdeVecina_ || paso.hueco;
    while (juzgadas_ < cola_.size() && cola_[juzgadas_].observacion.instante == paso.instante) {
        cola_[juzgadas_].paso = paso;
        juzgar(cola_[juzgadas_]);
        ++juzgadas_;
    }
    soltar();
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

void Marcador::juzgarRango(Juzgada& juzgada) const {
    const auto& medidas = juzgada.observacion.medidas;
    cadaCanal([&](Canal canal, std::size_t i) {
        const auto& limite = limites_.rango[i];
        if (!limite) return;
        const auto valor = valorExacto(medidas, canal);
        // Rain falls in the interval, the limit is one of a quarter of an hour.
        const bool lluvia = canal == Canal::lluvia;
        const Millonesimas tiempo = lluvia ? kTiempoDeLluvia : 1;
        const Millonesimas parte = lluvia ? juzgada.paso.intervalo : 1;
        if (valor * tiempo < limite->desde * parte || valor * tiempo > limite->hasta * parte) {
            juzgada.marcas.poner(canal, Marca::rango);
        }
    });
    if (enUnTope<conversiones::temperatura>(medidas.temperatura)) {
        juzgada.marcas.poner(Canal::temperatura, Marca::rango);
    }
    if (enUnTope<conversiones::presion>(medidas.presion)) juzgada.marcas.poner(Canal::presion, Marca::rango);
}

void Marcador::juzgarSalto(Juzgada& juzgada) const {
    if (!vecina_ || juzgada.observacion.instante - vecina_->instante > kVecindadDeSalto) return;
    cadaCanal([&](Canal canal, std::size_t i) {
        const auto& limite = limites_.salto[i];
        if (!limite) return;
        const auto diferencia =
            valorExacto(juzgada.observacion.medidas, canal) - valorExacto(vecina_->medidas, canal);
        if (diferencia > *limite || -diferencia > *limite) juzgada.marcas.poner(canal, Marca::salto);
    });
}

void Marcador::juzgarFijo(const Juzgada& juzgada) {
    const auto& medidas = juzgada.observacion.medidas;
    const auto posicion = primera_ + juzgadas_;
    const auto viento = valorExacto(medidas, Canal::velViento);
    for (auto& detenido : detenidos_) {
        if (huecoDesdeVecina_) detenido.fijo.cortar();
        if (detenido.soloConViento && viento <= *detenido.soloConViento) {
            detenido.fijo.cortar();
            continue;
        }
        const auto hallado = detenido.fijo.agregar(posicion, juzgada.observacion.instante,
                                                   valorExacto(medidas, detenido.canal));
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
