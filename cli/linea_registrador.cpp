#include "cli/linea_registrador.h"

#include <array>
#include <span>

#include "link/protocolo.h"

namespace telvane {

LineaRegistrador::LineaRegistrador(EntornoCli& entorno, Puertos& puertos, int numero)
    : entorno_(entorno), puerto_(puertos.abrir(numero, AjustesLinea{.baudios = kBaudios}, [] {})) {}

void LineaRegistrador::enviar(std::uint8_t byte) {
    puerto_->escribir(std::span(&byte, 1));
}

bool LineaRegistrador::esperarBytes(std::size_t cuantos, Bucle::Duracion plazo) {
    return esperar(
        entorno_,
        [&] {
            if (quedan() < cuantos) llenar();
            if (quedan() >= cuantos) return true;
            // One wake-up once the missing ones are here. Counted anew after each reading: the system does
            // not count those that it has handed over.
            puerto_->umbral(static_cast<int>(cuantos - quedan()));
            return false;
        },
        plazo);
}

// A byte that nobody reads would wake us again and again until the time is over: the answer to a wake-up is
// shorter than the most that a port can wait for.
void LineaRegistrador::pausar(Bucle::Duracion duracion) {
    puerto_->umbral(PuertoSerie::kUmbralMaximo);
    telvane::pausar(entorno_, duracion);
}

std::size_t LineaRegistrador::esperan() {
    llenar();
    return quedan();
}

void LineaRegistrador::llenar() {
    if (leidos_ == entrada_.size()) {
        entrada_.clear();
        leidos_ = 0;
    }
    std::array<std::uint8_t, 4096> trozo;
    while (const auto n = puerto_->leer(trozo)) {
        entrada_.insert(entrada_.end(), trozo.begin(), trozo.begin() + static_cast<std::ptrdiff_t>(n));
        if (n < trozo.size()) break;
    }
}

}  // namespace telvane
