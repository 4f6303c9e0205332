#include "platform/vigilia.h"

#include <utility>

namespace telvane {

void Vigilia::renovar() {
    if (inhibidor_ == nullptr) return;
    conVida_ = true;
    if (alarma_) return;
    // Once for the whole run: asking a system that refuses again and again would slow it down.
    guardia_ = inhibidor_->inhibir(porQue_);
    armar();
}

void Vigilia::soltar() {
    guardia_.reset();
    alarma_.reset();
}

// Looks once in a while whether something happened meanwhile, instead of an alarm for each sign of life.
void Vigilia::armar() {
    alarma_ = bucle_.alarma(kQuietud, [this] {
        if (std::exchange(conVida_, false)) {
            armar();
        } else {
            soltar();
        }
    });
}

}  // namespace telvane
