// How often a logger was sampling, and where it was not: told by the stamps, because the setting may have
// changed since.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>

#include "platform/anillo.h"
#include "serie_temporal/instante.h"

namespace telvane {

// What the stamps around one stamp say.
struct Cadencia {
    Instante instante{};
    int intervalo = 60;  // minutes in force: 1, 5, 10, 15, 30 or 60
    bool hueco = false;  // the stamp before it is further away than that
    // What its samples stand for: the time since the stamp before it, never more than the interval.
    std::chrono::seconds tramo = std::chrono::hours(1);
    bool operator==(const Cadencia&) const = default;
};

// Minutes of the smallest interval of the logger that the step does not exceed; 60 above them all.
int intervaloDePaso(std::chrono::seconds paso);

// Distinct stamps in rising order go in, each comes out when the ten after it are known. The interval in
// force is the median of the steps from ten stamps before to ten after (fewer at the ends; of an even number
// the greater middle one), rounded up to an interval of the logger; a station's only stamp counts as 60.
class Ritmo {
   public:
    static constexpr std::size_t kVecinos = 10;

    explicit Ritmo(std::function<void(const Cadencia&)> alSaber) : alSaber_(std::move(alSaber)) {}

    // Later than the one before.
    void agregar(Instante instante);
    // No more stamps: the last ten come out.
    void terminar();

   private:
    void soltarPaso();
    void contarPaso(std::int64_t segundos);
    void olvidarPaso(std::int64_t segundos);
    void decir();

    std::function<void(const Cadencia&)> alSaber_;
    // From ten before the one that is next to come out to the newest.
    Anillo<Instante> ventana_;
    std::size_t siguiente_ = 0;  // which of them comes out next
    // The steps of the window, smallest first.
    std::array<std::int64_t, 2 * kVecinos> pasos_{};
    std::size_t cuantos_ = 0;
};

}  // namespace telvane
