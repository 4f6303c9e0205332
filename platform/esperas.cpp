#include "platform/esperas.h"

#include <algorithm>
#include <vector>

namespace telvane {

namespace {

// The longest the loop sleeps before it looks at a clock that somebody may have set meanwhile.
constexpr double kRevisionSegundos = 1.0;
constexpr double kMinimoSegundos = 0.0005;

}  // namespace

Esperas::HastaAwaiter Esperas::hasta(const std::string& inicio, std::chrono::milliseconds limite,
                                     Condicion condicion) {
    return {*this, textoComoSegundos(inicio) + std::chrono::duration<double>(limite).count(),
            std::move(condicion)};
}

Esperas::PausaAwaiter Esperas::sinCeder(std::chrono::nanoseconds duracion) {
    return {bucle_, duracion};
}

void Esperas::revisar() {
    // Resuming one wait may start or end others: walk over a copy and ask whether each is still there. The
    // youngest first, because its end may be what an older one waits for.
    const std::vector<HastaAwaiter*> ahora(pendientes_.rbegin(), pendientes_.rend());
    for (auto* espera : ahora) {
        if (std::find(pendientes_.begin(), pendientes_.end(), espera) == pendientes_.end()) continue;
        if (!espera->cedio_ || !tareas_.esLaMasJoven(espera->operacion_)) continue;
        if (!espera->condicion_() && !espera->vencida()) continue;
        pendientes_.remove(espera);
        espera->alarma_.reset();
        espera->quien_.resume();
    }
}

Esperas::HastaAwaiter::~HastaAwaiter() {
    esperas_.pendientes_.remove(this);
}

void Esperas::HastaAwaiter::empezar() {
    esperas_.pendientes_.push_back(this);
    // The first turn of the loop: a condition that already holds ends the wait right after it.
    alarma_ = esperas_.bucle_.alarma(Bucle::Duracion(0), [this] {
        cedio_ = true;
        armar();
    });
}

bool Esperas::HastaAwaiter::vencida() const {
    return static_cast<double>(esperas_.reloj_.segundosDelDia()) >= final_;
}

void Esperas::HastaAwaiter::armar() {
    const double falta = final_ - static_cast<double>(esperas_.reloj_.segundosDelDia());
    // Over: revisar ends it after this event, or after the one that ends the younger operations.
    if (falta <= 0) return;
    const double dormir = std::clamp(falta, kMinimoSegundos, kRevisionSegundos);
    alarma_ = esperas_.bucle_.alarma(
        std::chrono::duration_cast<Bucle::Duracion>(std::chrono::duration<double>(dormir)),
        [this] { armar(); });
}

}  // namespace telvane
