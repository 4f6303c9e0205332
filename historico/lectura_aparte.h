// A station's samples read in this thread and taken in another one.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <vector>

#include "historico/lectura.h"

namespace telvane {

// What goes from one to the other at once: samples, and behind them those of an image.
struct Envio {
    std::vector<MuestraArchivada> muestras;
    std::optional<TramoImagen> tramo;

    std::size_t cuantas() const { return muestras.size() + (tramo ? tramo->cuantas() : 0); }
    // Calls para(muestra) for each, in their order.
    template <typename Para>
    void recorrer(Para&& para) const {
        for (const auto& muestra : muestras) para(muestra);
        if (tramo) tramo->recorrer([&](BytesMuestraConst registro) { para(unica(registro)); });
    }
};

// As Lectura::recorrer. alRecibir is called in the other thread only, alEnviar in this one before each of
// them; what either throws ends the reading and is thrown here.
void recorrerAparte(
    Lectura& lectura, const EstacionGuardada& estacion, const Periodo& periodo, Cuales cuales,
    const std::function<void(Envio&&)>& alRecibir, const std::function<void()>& alEnviar = [] {});

}  // namespace telvane
