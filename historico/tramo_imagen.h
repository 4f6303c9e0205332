// Samples of a stretch of time that an image tells all by itself: each the only one of its stamp.
#pragma once

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
        : imagen_(std::move(imagen)), desde_(desde), hasta_(hasta) {}

    // Calls para(registro) for each distinct one, in order of stamp.
    template <typename Para>
    void recorrer(Para&& para) const {
        for (const auto ranura : ranurasEnOrden(*imagen_, desde_, hasta_)) para(enRanura(*imagen_, ranura));
    }

   private:
    Bytes imagen_;
    Instante desde_;
    Instante hasta_;
};

}  // namespace telvane
