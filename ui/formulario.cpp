#include "ui/formulario.h"

#include <algorithm>

namespace telvane {

namespace {

// More lines than an operator scrolls back through in a day.
constexpr std::size_t kMaxLineas = 500;

}  // namespace

Control::Control(Formulario& formulario, std::string_view nombre, Clase clase, const Inicial& inicial)
    : formulario_(formulario),
      nombre_(nombre),
      clase_(clase),
      nombreAccesible_(inicial.nombreAccesible),
      inicial_(inicial),
      caption(*this, std::string(inicial.caption)),
      text(*this, std::string(inicial.text)),
      hint(*this, std::string(inicial.hint)),
      enabled(*this, inicial.enabled),
      visible(*this, inicial.visible),
      locked(*this, inicial.locked),
      value(*this, 0),
      maximum(*this, 0),
      maxLength(*this, inicial.maxLength),
      mask(*this, std::string(inicial.mask)),
      interval(*this, inicial.interval) {
    formulario.agregar(*this);
}

void Control::restablecer() {
    caption = std::string(inicial_.caption);
    text = std::string(inicial_.text);
    hint = std::string(inicial_.hint);
    enabled = inicial_.enabled;
    visible = inicial_.visible;
    locked = inicial_.locked;
    value = 0;
    maximum = 0;
    maxLength = inicial_.maxLength;
    mask = std::string(inicial_.mask);
    interval = inicial_.interval;
}

Formulario::Formulario(std::string_view nombre, std::string_view caption)
    : nombre_(nombre), captionInicial_(caption), caption_(caption) {}

Formulario::Observacion Formulario::observar(Observador observador) {
    std::erase_if(observadores_, [](const auto& debil) { return debil.expired(); });
    auto observacion = std::make_shared<Observador>(std::move(observador));
    observadores_.push_back(observacion);
    return observacion;
}

template <class Accion>
void Formulario::avisar(const Accion& accion) const {
    // By index: an observer may bring another one along. NOLINTNEXTLINE(modernize-loop-convert)
    for (std::size_t i = 0; i < observadores_.size(); ++i) {
        if (const auto observador = observadores_[i].lock()) accion(*observador);
    }
}

void Formulario::cambio(Control& control, Que que) const {
    avisar([&](const Observador& o) {
        if (o.alCambiar) o.alCambiar(control, que);
    });
}

void Formulario::cambioForma() const {
    avisar([](const Observador& o) {
        if (o.alCambiarForma) o.alCambiarForma();
    });
}

void Formulario::caption(std::string nuevo) {
    if (nuevo == caption_) return;
    caption_ = std::move(nuevo);
    cambioForma();
}

void Formulario::cargar() {
    if (cargado_) return;
    cargado_ = true;
    cambioForma();
}

void Formulario::mostrar() {
    cargar();
    if (mostrado_) {
        avisar([](const Observador& o) {
            if (o.alMostrarDeNuevo) o.alMostrarDeNuevo();
        });
        return;
    }
    mostrado_ = true;
    cambioForma();
}

void Formulario::descargar() {
    if (!cargado_) return;
    cargado_ = false;
    mostrado_ = false;
    cambioForma();
    caption_ = captionInicial_;
    for (auto* control : controles_) control->restablecer();
}

Control* Formulario::buscar(std::string_view nombre) const {
    const auto lugar =
        std::find_if(controles_.begin(), controles_.end(), [&](auto* c) { return c->nombre() == nombre; });
    return lugar == controles_.end() ? nullptr : *lugar;
}

void Formulario::imprimir(std::string linea) {
    if (lineas_.size() == kMaxLineas) lineas_.pop_front();
    lineas_.push_back(std::move(linea));
    avisar([&](const Observador& o) {
        if (o.alImprimir) o.alImprimir(lineas_.back());
    });
}

}  // namespace telvane
