// The last images of a station as they came, and what they tell together: how often it is visited, what the
// last look was, and how long its memory will do.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "historico/almacen.h"

namespace telvane {

using Llegadas = std::vector<Llegada>;

// In the order in which they left their loggers, each once, the last limites_aviso::kUltimas of them.
void ordenarLlegadas(Llegadas& llegadas);

// From one visit to the next, as a rule.
std::chrono::seconds ritmoDe(const Llegadas& ultimas);

// The newest whole image; nullptr where there is none.
const FichaImagen* ultimaEntera(std::span<const Llegada> ultimas);

// The last look: the newest whole image among all but the last one that came; nullptr where there is none.
const FichaImagen* miradaAnterior(const Llegadas& ultimas);

// How far the newest whole image has filled the memory.
struct PronosticoMemoria {
    std::int64_t libres = 0;  // places for samples
    // It writes over its oldest samples.
    bool sobrescribe = false;
    // From the newest sample on: how long until one that was not downloaded is lost.
    std::chrono::minutes plazo{};
    // When the last place is taken; of a full memory, its last sample.
    Instante llena{};
};
// intervalo: minutes between samples. nullopt: there is no whole image with samples.
std::optional<PronosticoMemoria> pronosticar(const Llegadas& ultimas, std::chrono::minutes intervalo);

}  // namespace telvane
