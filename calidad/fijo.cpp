#include "calidad/fijo.h"

#include <algorithm>

namespace telvane {

bool Fijo::juntos(Millonesimas a, Millonesimas b) const {
    const auto diferencia = a < b ? b - a : a - b;
    return amplitud_ == Amplitud::menor ? diferencia < limite_.amplitud : diferencia <= limite_.amplitud;
}

// Whether the mean of no stretch that holds the value can be above the wind's limit.
bool Fijo::nuncaSopla(Millonesimas valor) const {
    return media_ == Media::mayor && valor + limite_.amplitud <= limite_.viento;
}
// Whether every value of a stretch that holds this one is above it.
bool Fijo::siempreSopla(Millonesimas valor) const {
    return media_ == Media::indistinta || valor - limite_.amplitud > limite_.viento;
}

void Fijo::cortar() {
    tramos_.clear();
    suma_ = 0;
    sabidas_ = despues_;
}

// Keeps the longest end of the stretch that goes together with the value.
void Fijo::recortar(Millonesimas valor) {
    if (tramos_.empty() || (juntos(minimo_, valor) && juntos(maximo_, valor))) return;
    auto primero = tramos_.size();
    while (primero > 0 && juntos(tramos_[primero - 1].valor, valor)) --primero;
    tramos_.pop_front(primero);
    if (!tramos_.empty()) medirExtremos();
}

void Fijo::medirExtremos() {
    minimo_ = maximo_ = tramos_.front().valor;
    for (std::size_t i = 1; i < tramos_.size(); ++i) {
        minimo_ = std::min(minimo_, tramos_[i].valor);
        maximo_ = std::max(maximo_, tramos_[i].valor);
    }
}

void Fijo::anotar(Posicion posicion, Instante instante, Millonesimas valor) {
    if (tramos_.empty()) {
        minimo_ = maximo_ = valor;
        suma_ = 0;
    }
    minimo_ = std::min(minimo_, valor);
    maximo_ = std::max(maximo_, valor);
    const auto sobre = valor - limite_.viento;
    // Where values pull the mean down a stretch may have to begin between two equal ones.
    const bool uno = media_ == Media::indistinta || sobre >= 0;
    if (tramos_.empty() || tramos_.back().valor != valor || !uno) {
        tramos_.push_back({.desde = posicion, .instante = instante, .valor = valor, .sumaAntes = suma_});
    }
    suma_ += sobre;
    despues_ = posicion + 1;
}

// Where the longest stretch begins that ends now and qualifies.
const Fijo::Tramo* Fijo::comienzo(Instante instante) const {
    const bool basta = media_ == Media::indistinta || minimo_ > limite_.viento;
    if (media_ == Media::mayor && maximo_ <= limite_.viento) return nullptr;
    for (std::size_t i = 0; i < tramos_.size(); ++i) {
        const auto& tramo = tramos_[i];
        if (instante - tramo.instante < limite_.dura) return nullptr;
        if (basta || suma_ > tramo.sumaAntes) return &tramo;
    }
    return nullptr;
}

// What is marked and no longer needed for a stretch to be long enough. It is needed where the mean of what
// follows may hang on it.
void Fijo::soltarSobrante(Instante instante, Millonesimas valor) {
    if (!siempreSopla(valor)) return;
    bool menos = false;
    while (tramos_.size() > 1 && instante - tramos_[1].instante >= limite_.dura) {
        menos = menos || tramos_.front().valor == minimo_ || tramos_.front().valor == maximo_;
        tramos_.pop_front();
    }
    if (menos) medirExtremos();
}

std::optional<Fijo::Hallado> Fijo::agregar(Posicion posicion, Instante instante, Millonesimas valor) {
    if (nuncaSopla(valor)) {
        despues_ = posicion + 1;
        cortar();
        return std::nullopt;
    }
    recortar(valor);
    anotar(posicion, instante, valor);
    const auto* desde = comienzo(instante);
    if (desde == nullptr) return std::nullopt;
    const Hallado hallado{.desde = std::max(desde->desde, sabidas_), .hasta = posicion};
    // All before it are known only if nothing before it stays open.
    if (desde == &tramos_.front()) {
        sabidas_ = despues_;
        soltarSobrante(instante, valor);
    }
    return hallado;
}

}  // namespace telvane
