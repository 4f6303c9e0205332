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
    recientes_.clear();
    siguiendo_ = false;
    tramos_.clear();
    sabidas_ = despues_;
}

// A stretch so long is followed, because it may become long enough.
std::chrono::seconds Fijo::quePromete() const {
    return limite_.dura / 2;
}

// The time is long enough: what goes together with its last value, looked at from there.
std::optional<Fijo::Hallado> Fijo::mirarAtras() {
    auto menor = recientes_.back().valor;
    auto mayor = menor;
    auto primero = recientes_.size();
    for (; primero > 0; --primero) {
        const auto valor = recientes_[primero - 1].valor;
        if (nuncaSopla(valor) || !juntos(menor, valor) || !juntos(mayor, valor)) break;
        menor = std::min(menor, valor);
        mayor = std::max(mayor, valor);
    }
    recientes_.pop_front(primero);
    if (recientes_.empty()) {
        cortar();
        return std::nullopt;
    }
    const auto ultimo = recientes_.back().instante;
    if (ultimo - recientes_.front().instante < quePromete()) return std::nullopt;
    siguiendo_ = true;
    std::optional<Hallado> hallado;
    for (std::size_t i = 0; i < recientes_.size(); ++i) hallado = agregarAlTramo(recientes_[i]);
    olvidarRecientes(ultimo);
    return hallado;
}

std::optional<Fijo::Hallado> Fijo::seguir() {
    const auto reciente = recientes_.back();
    if (nuncaSopla(reciente.valor)) {
        cortar();
        return std::nullopt;
    }
    const auto hallado = agregarAlTramo(reciente);
    olvidarRecientes(reciente.instante);
    if (reciente.instante - tramos_.front().instante >= quePromete()) return hallado;
    while (recientes_.front().posicion < tramos_.front().desde) recientes_.pop_front();
    siguiendo_ = false;
    tramos_.clear();
    return hallado;
}

void Fijo::olvidarRecientes(Instante instante) {
    while (instante - recientes_.front().instante > quePromete()) recientes_.pop_front();
}

// Keeps the longest end of the stretch that goes together with the value.
void Fijo::recortar(Millonesimas valor) {
    if (tramos_.empty() || (juntos(minimo_, valor) && juntos(maximo_, valor))) return;
    auto primero = tramos_.size();
    while (juntos(tramos_[primero - 1].valor, valor)) --primero;  // one of them is not
    tramos_.pop_front(primero);
    if (!tramos_.empty()) medirExtremos();
}

void Fijo::medirExtremos() {
    minimo_ = maximo_ = tramos_.back().valor;
    for (std::size_t i = 0; i < tramos_.size(); ++i) {
        minimo_ = std::min(minimo_, tramos_[i].valor);
        maximo_ = std::max(maximo_, tramos_[i].valor);
    }
}

void Fijo::anotar(const Reciente& reciente) {
    const auto valor = reciente.valor;
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
        tramos_.push_back(
            {.desde = reciente.posicion, .instante = reciente.instante, .valor = valor, .sumaAntes = suma_});
    }
    suma_ += sobre;
}

// Where the longest stretch begins that ends now and qualifies.
const Fijo::Tramo* Fijo::comienzo(Instante instante) const {
    if (media_ == Media::mayor && maximo_ <= limite_.viento) return nullptr;
    for (std::size_t i = 0; i < tramos_.size(); ++i) {
        const auto& tramo = tramos_[i];
        if (instante - tramo.instante < limite_.dura) return nullptr;
        if (media_ == Media::indistinta || suma_ > tramo.sumaAntes) return &tramo;
    }
    return nullptr;
}

// What is marked and no longer needed for a stretch to be long enough. It is needed where the mean of what
// follows may hang on it.
void Fijo::soltarSobrante(Instante instante, Millonesimas valor) {
    if (!siempreSopla(valor)) return;
    bool menos = false;
    while (tramos_.size() > 1 && instante - tramos_[1].instante >= limite_.dura) {
        tramos_.pop_front();
        menos = true;
    }
    if (menos) medirExtremos();
}

std::optional<Fijo::Hallado> Fijo::agregarAlTramo(const Reciente& reciente) {
    recortar(reciente.valor);
    anotar(reciente);
    const auto* desde = comienzo(reciente.instante);
    if (desde == nullptr) return std::nullopt;
    const Hallado hallado{.desde = std::max(desde->desde, sabidas_), .hasta = reciente.posicion};
    // All before it are known only if nothing before it stays open.
    if (desde == &tramos_.front()) {
        sabidas_ = reciente.posicion + 1;
        soltarSobrante(reciente.instante, reciente.valor);
    }
    return hallado;
}

}  // namespace telvane
