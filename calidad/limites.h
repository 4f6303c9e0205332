// The limits beyond which a value is doubtful: one table, and where its numbers come from.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <optional>

#include "calidad/marcas.h"

namespace telvane {

// Limits and the values that are held to them are counted in millionths of the channel's unit, so that every
// comparison is exact.
using Millonesimas = std::int64_t;
inline constexpr Millonesimas kUnidad = 1'000'000;

constexpr Millonesimas enMillonesimas(std::int32_t valor, Canal canal) {
    Millonesimas escala = kUnidad;
    for (int i = 0; i < kDecimalesCanal[static_cast<std::size_t>(canal)]; ++i) escala /= 10;
    return valor * escala;
}

struct LimiteRango {
    Millonesimas desde{};
    Millonesimas hasta{};
    bool operator==(const LimiteRango&) const = default;
};

struct LimiteFijo {
    std::chrono::seconds dura{};
    // Wind direction: largest difference of a stretch that stands still; else the smallest of one that moves.
    Millonesimas amplitud{};
    // Wind alone, km/h: it blows when its mean (direction: its speed at every sample) is above this.
    Millonesimas viento = 0;
    bool operator==(const LimiteFijo&) const = default;
};

struct Limites {
    template <typename Limite>
    using PorCanal = std::array<std::optional<Limite>, kCanales>;

    PorCanal<LimiteRango> rango;  // rain: in kTiempoDeLluvia, in proportion to the interval in force
    PorCanal<Millonesimas> salto;
    PorCanal<LimiteFijo> fijo;
    bool operator==(const Limites&) const = default;
};

inline constexpr int kTiempoDeLluvia = 15;  // minutes
// A jump is one against a neighbour that is no further away than this.
inline constexpr std::chrono::minutes kVecindadDeSalto{60};

// The table that holds for a station without limits of its own.
const Limites& limitesUsuales();

}  // namespace telvane
