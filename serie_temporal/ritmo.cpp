#include "serie_temporal/ritmo.h"

#include <algorithm>

#include "loggerconfig/datos_config.h"

namespace telvane {

int intervaloDePaso(std::chrono::seconds paso) {
    for (const auto& intervalo : kIntervalos) {
        if (paso <= std::chrono::minutes(intervalo.minutos)) return intervalo.minutos;
    }
    return kIntervalos.back().minutos;
}

void Ritmo::agregar(Instante instante) {
    if (!ventana_.empty()) contarPaso((instante - ventana_.back()).count());
    ventana_.push_back(instante);
    if (ventana_.size() > siguiente_ + kVecinos) decir();
}

void Ritmo::terminar() {
    while (siguiente_ < ventana_.size()) decir();
    ventana_.clear();
    siguiente_ = 0;
    cuantos_ = 0;
}

void Ritmo::decir() {
    Cadencia paso{.instante = ventana_[siguiente_]};
    if (cuantos_ > 0) paso.intervalo = intervaloDePaso(std::chrono::seconds(pasos_[cuantos_ / 2]));
    paso.tramo = std::chrono::minutes(paso.intervalo);
    if (siguiente_ > 0) {
        const auto distancia = ventana_[siguiente_] - ventana_[siguiente_ - 1];
        paso.hueco = distancia > paso.tramo;
        paso.tramo = std::min(paso.tramo, distancia);
    }
    if (++siguiente_ > kVecinos) soltarPaso();
    alSaber_(paso);
}

void Ritmo::soltarPaso() {
    olvidarPaso((ventana_[1] - ventana_[0]).count());
    ventana_.pop_front();
    --siguiente_;
}

void Ritmo::contarPaso(std::int64_t segundos) {
    const auto fin = pasos_.begin() + static_cast<std::ptrdiff_t>(cuantos_++);
    // As a rule they are all alike.
    const auto lugar =
        cuantos_ == 1 || *(fin - 1) <= segundos ? fin : std::upper_bound(pasos_.begin(), fin, segundos);
    std::move_backward(lugar, fin, fin + 1);
    *lugar = segundos;
}

void Ritmo::olvidarPaso(std::int64_t segundos) {
    const auto fin = pasos_.begin() + static_cast<std::ptrdiff_t>(cuantos_--);
    const auto lugar = *(fin - 1) == segundos ? fin - 1 : std::lower_bound(pasos_.begin(), fin, segundos);
    std::move(lugar + 1, fin, lugar);
}

}  // namespace telvane
