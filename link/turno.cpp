#include "link/turno.h"

#include <algorithm>

namespace telvane {

Turno::Espera::Espera(Turno& turno, std::chrono::nanoseconds plazo) : turno_(turno) {
    ++turno_.esperas_;
    // The clock of the wait is rounded, and its end may be behind a click in the queue.
    turno_.contar(plazo + kQuietud);
}

// One that an earlier answer ended at once: the opening is as good as a byte.
Turno::Espera::~Espera() {
    --turno_.esperas_;
    turno_.contar(kQuietud);
}

void Turno::vive() {
    contar(kQuietud);
}

void Turno::contar(std::chrono::nanoseconds plazo) {
    hasta_ = reloj_.monotono() + plazo;
}

bool Turno::enProgreso() const {
    if (bucle_.enPausa()) return true;
    // One of them is asking or telling the operator something.
    if (operaciones_ > esperas_) return true;
    const bool hayIntercambio = operaciones_ > 0 || (canalEnUso_ && canalEnUso_());
    return hayIntercambio && falta() > std::chrono::nanoseconds(0);
}

std::chrono::nanoseconds Turno::falta() const {
    return std::max(hasta_ - reloj_.monotono(), std::chrono::nanoseconds(0));
}

}  // namespace telvane
