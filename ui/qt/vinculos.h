// The bond between the controls of a form and the widgets that show them.
#pragma once

#include <memory>
#include <unordered_map>

#include <QObject>
#include <QPointer>
#include <QWidget>

#include "ui/formulario.h"
#include "ui/qt/usuario.h"

namespace telvane {

// One control and its widget. The widget always shows what the control holds; nothing but the user's own
// editing goes the other way.
class Vinculo {
   public:
    Vinculo(Control& control, const Usuario& usuario, QWidget& widget);
    Vinculo(const Vinculo&) = delete;
    Vinculo& operator=(const Vinculo&) = delete;
    virtual ~Vinculo() = default;

    Control& control() const { return control_; }
    QWidget& widget() const { return widget_; }
    void aplicar(Que que);
    void aplicarTodo();

   protected:
    // What only this class of control has.
    virtual void aplicarPropio(Que que) = 0;
    const Usuario& usuario() const { return usuario_; }
    // Connections made through it end with the bond.
    QObject* contexto() { return &contexto_; }

   private:
    Control& control_;
    const Usuario& usuario_;
    QWidget& widget_;
    QObject contexto_;
};

// All bonds of one window. The form outlives them. A control that closes or goes hands the keyboard to one
// that starts nothing, and gets it back when it opens, unless the user went elsewhere meanwhile.
class Vinculos {
   public:
    Vinculos(Formulario& forma, Usuario usuario);

    // Makes the widget of a control that has a surface, in its present state. The parent owns the widget.
    QWidget* crear(Control& control, QWidget* padre);
    // nullptr if none was made.
    QWidget* widget(const Control& control) const;
    // For what a window does by itself, as when its frame closes it.
    const Usuario& usuario() const { return usuario_; }

   private:
    Usuario soloAlAlcance();
    std::unique_ptr<Vinculo> vincular(Control& control, QWidget* padre);
    void alCambiar(const Control& control, Que que);
    void apartarFoco(QWidget& widget);
    void devolverFoco(QWidget& widget);

    Usuario usuario_;
    Usuario alAlcance_;
    std::unordered_map<const Control*, std::unique_ptr<Vinculo>> vinculos_;
    // The widget that had the focus when it was closed, and the one that has it for that long.
    QPointer<QWidget> apartado_;
    QPointer<QWidget> refugio_;
    Formulario::Observacion observacion_;
};

}  // namespace telvane
