#include "historico/lectura_aparte.h"

#include <cstddef>
#include <utility>

#include "historico/relevo.h"

namespace telvane {

void recorrerAparte(Lectura& lectura, const EstacionGuardada& estacion, const Periodo& periodo, Cuales cuales,
                    const std::function<void(Envio&&)>& alRecibir, const std::function<void()>& alEnviar) {
    // As many as an image holds.
    constexpr std::size_t kMuestras = 8192;
    Relevo<Envio, 1> relevo(alRecibir);
    Envio envio;
    const auto enviar = [&] {
        alEnviar();
        relevo.dar(std::exchange(envio, {}));
    };
    lectura.recorrer(
        estacion, periodo, cuales,
        [&](const MuestraArchivada& muestra) {
            envio.muestras.push_back(muestra);
            if (envio.muestras.size() == kMuestras) enviar();
        },
        [&](const TramoImagen& tramo) {
            envio.tramo = tramo;
            enviar();
        });
    enviar();
    relevo.terminar();
}

}  // namespace telvane
