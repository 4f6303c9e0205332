// A logger for benches of the archive, as its memory grows.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "serie_temporal/instante.h"
#include "simulator/memoria_simulada.h"

namespace telvane::bench {

inline constexpr std::size_t kRanurasDeMuestras = 8178;

// The memory of a logger that has taken so many samples, one every ten minutes, and writes over the oldest.
class Registrador {
   public:
    explicit Registrador(const std::string& serie, unsigned semilla) : clima_(semilla) {
        bytes_ = memoriaVacia({.serie = serie}, {});
    }
    const std::vector<std::uint8_t>& tomar(std::size_t cuantas) {
        for (std::size_t i = 0; i < cuantas; ++i, ++tomadas_) {
            const auto cuando =
                SegundosCiviles(instante({.anio = 2002, .mes = 1, .dia = 1}).time_since_epoch()) +
                std::chrono::minutes(10 * tomadas_);
            const auto registro = registroDeMuestra(clima_.en(cuando), fechaHoraDe(cuando));
            const auto ranura = tomadas_ % kRanurasDeMuestras;
            std::copy(
                registro.begin(), registro.end(),
                bytes_.begin() + static_cast<std::ptrdiff_t>(kInicioRegistros + ranura * registro.size()));
            ponerReloj(bytes_, fechaHoraDe(cuando));
        }
        return bytes_;
    }

   private:
    Clima clima_;
    std::vector<std::uint8_t> bytes_;
    std::size_t tomadas_ = 0;
};

}  // namespace telvane::bench
