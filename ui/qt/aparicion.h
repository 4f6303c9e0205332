// Keeps a secondary window on the screen for as long as its form is shown.
#pragma once

#include <functional>
#include <memory>

#include <QTimer>
#include <QWidget>

#include "ui/formulario.h"

namespace telvane {

// The window is made when its form appears and thrown away when it goes. Changes take effect once the loop
// turns: a form that comes and goes within one event never flickers, and a window is never destroyed inside
// its own click.
class Aparicion {
   public:
    using Fabrica = std::function<std::unique_ptr<QWidget>()>;
    // Runs an action now or, for a window that needs another one on the screen first, later.
    using Momento = std::function<void(std::function<void()>)>;

    // fabrica makes the window; Aparicion shows it. The form outlives this, and this outlives what momento
    // keeps.
    Aparicion(
        Formulario& forma, Fabrica fabrica, Momento momento = [](const std::function<void()>& ya) { ya(); });
    Aparicion(const Aparicion&) = delete;
    Aparicion& operator=(const Aparicion&) = delete;

    // nullptr while it is not on the screen.
    QWidget* ventana() const { return ventana_.get(); }

   private:
    void sincronizar();
    void alFrente();

    Formulario& forma_;
    Fabrica fabrica_;
    Momento momento_;
    std::unique_ptr<QWidget> ventana_;
    QTimer vuelta_;
    Formulario::Observacion observacion_;
};

}  // namespace telvane
