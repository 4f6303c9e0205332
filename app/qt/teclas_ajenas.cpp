#include "app/qt/teclas_ajenas.h"

#include <utility>

#include <QApplication>
#include <QWindow>

namespace telvane {

namespace {

bool contesta(int tecla) {
    return tecla == Qt::Key_Return || tecla == Qt::Key_Enter || tecla == Qt::Key_Space;
}

}  // namespace

TeclasAjenas::TeclasAjenas() {
    QCoreApplication::instance()->installEventFilter(this);
}

void TeclasAjenas::aparece(QWidget& ventana) {
    ventana_ = &ventana;
    propias_.clear();
}

// Keys come to the window of the system first, and from there to whoever has the focus.
bool TeclasAjenas::eventFilter(QObject* objeto, QEvent* suceso) {
    const bool pulsada = suceso->type() == QEvent::KeyPress;
    if ((!pulsada && suceso->type() != QEvent::KeyRelease) || !objeto->isWindowType()) return false;
    const auto& tecla = *static_cast<QKeyEvent*>(suceso);
    const bool ajena = esAjena(tecla, pulsada);
    if (!pulsada) subidas_[tecla.key()] = tecla.timestamp();
    return ajena && ventana_ != nullptr && objeto == ventana_->windowHandle();
}

bool TeclasAjenas::esAjena(const QKeyEvent& suceso, bool pulsada) {
    const int tecla = suceso.key();
    if (!pulsada || suceso.isAutoRepeat() || sigueAbajo(suceso)) return !propias_.contains(tecla);
    if (contesta(tecla)) {
        const auto ahora = std::chrono::steady_clock::now();
        const auto anterior = std::exchange(pulsaciones_[tecla], ahora);
        if (seguida(tecla, anterior, ahora)) return true;
    }
    propias_.insert(tecla);
    return false;
}

// A display repeats a held key as one that goes up and down in the same instant. Where the two arrive apart,
// as on a busy machine, the toolkit takes them for two strokes.
bool TeclasAjenas::sigueAbajo(const QKeyEvent& suceso) const {
    const auto subida = subidas_.find(suceso.key());
    return suceso.timestamp() != 0 && subida != subidas_.end() && subida->second == suceso.timestamp();
}

// The second stroke of two, the first of which went to what was there before.
bool TeclasAjenas::seguida(int tecla, Instante anterior, Instante ahora) const {
    if (propias_.contains(tecla)) return false;
    return ahora - anterior < std::chrono::milliseconds(QApplication::doubleClickInterval());
}

}  // namespace telvane
