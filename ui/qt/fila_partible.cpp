#include "ui/qt/fila_partible.h"

#include <algorithm>

#include <QBoxLayout>
#include <QEvent>

namespace telvane {

FilaPartible::FilaPartible(QWidget* padre) : QWidget(padre), fila_(new QHBoxLayout(this)) {
    fila_->setContentsMargins(0, 0, 0, 0);
}

QSize FilaPartible::minimumSizeHint() const {
    int ancho = 0;
    for (int i = 0; i < fila_->count(); ++i) ancho = std::max(ancho, fila_->itemAt(i)->minimumSize().width());
    return {ancho, fila_->minimumSize().height()};
}

int FilaPartible::anchoAlLado() const {
    int ancho = 0;
    for (int i = 0; i < fila_->count(); ++i) {
        const auto* parte = fila_->itemAt(i);
        if (parte->isEmpty()) continue;
        ancho += (ancho > 0 ? fila_->spacing() : 0) + parte->minimumSize().width();
    }
    return ancho;
}

void FilaPartible::disponer() {
    const auto sentido = width() >= anchoAlLado() ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom;
    if (fila_->direction() != sentido) fila_->setDirection(sentido);
}

bool FilaPartible::event(QEvent* suceso) {
    if (suceso->type() == QEvent::LayoutRequest) disponer();
    return QWidget::event(suceso);
}

void FilaPartible::resizeEvent(QResizeEvent* suceso) {
    disponer();
    QWidget::resizeEvent(suceso);
}

}  // namespace telvane
