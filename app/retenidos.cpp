#include "app/retenidos.h"

#include <utility>

namespace telvane {

void Retenidos::entregar(Bucle::Accion accion, const Control* orden) {
    if (!bucle_.enPausa()) {
        bucle_.entregar(accion);
        return;
    }
    const auto yaEspera = [orden](const Retenido& otro) { return otro.orden == orden; };
    if (orden != nullptr) std::erase_if(cola_, yaEspera);
    cola_.push_back({std::move(accion), orden});
}

void Retenidos::revisar() {
    if (entregando_) return;
    entregando_ = true;
    alarma_.reset();
    // Each one is asked for anew: the one before may have begun an exchange of its own.
    while (!cola_.empty() && turnos_.libre()) {
        const auto accion = std::move(cola_.front().accion);
        cola_.pop_front();
        bucle_.entregar(accion);
    }
    entregando_ = false;
    if (cola_.empty()) return;
    if (const auto falta = turnos_.falta(); falta > Bucle::Duracion(0)) alarma_ = bucle_.alarma(falta, [] {});
}

}  // namespace telvane
