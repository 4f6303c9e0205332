// A form as data: its controls by designer name, its caption, and the lines printed on its surface.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "ui/control.h"

namespace telvane {

class Formulario {
   public:
    // The texts are not copied: they stay for as long as the form is used.
    explicit Formulario(std::string_view nombre, std::string_view caption);
    Formulario(const Formulario&) = delete;
    Formulario& operator=(const Formulario&) = delete;
    virtual ~Formulario() = default;

    std::string_view nombre() const { return nombre_; }
    const std::string& caption() const { return caption_; }
    void caption(std::string nuevo);

    // A form may be loaded without being shown. Unloading hides it; its next load finds the state at load.
    // That its caption goes back no observer is told.
    bool cargado() const { return cargado_; }
    bool mostrado() const { return mostrado_; }
    void cargar();
    void mostrar();
    void descargar();

    // Every control, in the order of the table.
    const std::vector<Control*>& controles() const { return controles_; }
    // By designer name; nullptr if there is none.
    Control* buscar(std::string_view nombre) const;

    // Prints one line of plain text on the form's surface, newest last; of more than 500 the oldest scroll
    // off.
    void imprimir(std::string linea);
    const std::deque<std::string>& lineas() const { return lineas_; }

    // Somebody who renders or follows this form: told of each change, once, after it happened.
    struct Observador {
        std::function<void(Control&, Que)> alCambiar;
        std::function<void()> alCambiarForma;  // caption, loaded, shown
        std::function<void(const std::string&)> alImprimir;
        // Shown while it is on show: somebody wants to see it.
        std::function<void()> alMostrarDeNuevo = {};
    };
    using Observacion = std::shared_ptr<Observador>;
    // Observes for as long as the caller keeps what is returned.
    [[nodiscard]] Observacion observar(Observador observador);

   private:
    friend class Control;
    template <class T, Que cual>
    friend class Propiedad;
    void agregar(Control& control) { controles_.push_back(&control); }
    void cambio(Control& control, Que que) const;
    void cambioForma() const;
    template <class Accion>
    void avisar(const Accion& accion) const;

    std::string_view nombre_;
    std::string_view captionInicial_;
    std::string caption_;
    bool cargado_ = false;
    bool mostrado_ = false;
    std::vector<Control*> controles_;
    std::deque<std::string> lineas_;
    std::vector<std::weak_ptr<Observador>> observadores_;
};

template <class T, Que cual>
Propiedad<T, cual>& Propiedad<T, cual>::operator=(T nuevo) {
    if (nuevo == valor_) return *this;
    valor_ = std::move(nuevo);
    control_.formulario().cambio(control_, cual);
    return *this;
}

}  // namespace telvane
