// Samples of a stretch of time that an image tells all by itself: each the only one of its stamp.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "historico/imagen.h"

namespace telvane {

// It shares the image's bytes, so that it can go to another thread.
class TramoImagen {
   public:
    using Bytes = std::shared_ptr<const std::vector<std::uint8_t>>;

    // Between two moments, both included.
    TramoImagen(Bytes imagen, Instante desde, Instante hasta)
        : imagen_(std::move(imagen)), ranuras_(ranurasEnOrden(*imagen_, desde, hasta)) {}

    // Distinct ones.
    std::size_t cuantas() const { return ranuras_.size(); }
    // Calls para(registro) for each, in order of stamp.
    template <typename Para>
    void recorrer(Para&& para) const {
        for (const auto ranura : ranuras_) para(enRanura(*imagen_, ranura));
    }

   private:
    Bytes imagen_;
    std::vector<std::uint16_t> ranuras_;
};

}  // namespace telvane
