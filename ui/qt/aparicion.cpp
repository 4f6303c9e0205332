#include "ui/qt/aparicion.h"

#include <utility>

namespace telvane {

Aparicion::Aparicion(Formulario& forma, Fabrica fabrica, Momento momento)
    : forma_(forma), fabrica_(std::move(fabrica)), momento_(std::move(momento)) {
    vuelta_.setSingleShot(true);
    QObject::connect(&vuelta_, &QTimer::timeout, &vuelta_, [this] { momento_([this] { sincronizar(); }); });
    observacion_ = forma.observar({.alCambiar = {},
                                   .alCambiarForma = [this] { vuelta_.start(0); },
                                   .alImprimir = {},
                                   .alMostrarDeNuevo = [this] { alFrente(); }});
    if (forma.mostrado()) vuelta_.start(0);
}

void Aparicion::sincronizar() {
    if (!forma_.mostrado()) {
        ventana_.reset();
    } else if (!ventana_) {
        ventana_ = fabrica_();
        ventana_->show();
    }
}

// Minimised, or behind another window.
void Aparicion::alFrente() {
    if (!ventana_) return;
    ventana_->setWindowState(ventana_->windowState() & ~Qt::WindowMinimized);
    ventana_->raise();
    ventana_->activateWindow();
}

}  // namespace telvane
