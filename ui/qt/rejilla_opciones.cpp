#include "ui/qt/rejilla_opciones.h"

#include <algorithm>

#include <QEvent>
#include <QGridLayout>

namespace telvane {

namespace {

constexpr int kPorFila = 3;

}  // namespace

RejillaOpciones::RejillaOpciones(QWidget* padre) : QWidget(padre), rejilla_(new QGridLayout(this)) {
    rejilla_->setContentsMargins(0, 0, 0, 0);
    rejilla_->setColumnStretch(kPorFila, 1);
    // What is on show stands in the first row.
    rejilla_->setAlignment(Qt::AlignTop);
}

void RejillaOpciones::agregar(QWidget* opcion) {
    opciones_.push_back(opcion);
    opcion->installEventFilter(this);
    recolocar();
}

bool RejillaOpciones::eventFilter(QObject* objeto, QEvent* suceso) {
    if (suceso->type() == QEvent::ShowToParent || suceso->type() == QEvent::HideToParent) recolocar();
    return QWidget::eventFilter(objeto, suceso);
}

void RejillaOpciones::recolocar() {
    int lugar = 0;
    int anchura = 0;
    int altura = 0;
    for (auto* opcion : opciones_) {
        rejilla_->removeWidget(opcion);
        anchura = std::max(anchura, opcion->sizeHint().width());
        altura = std::max(altura, opcion->sizeHint().height());
        if (opcion->isHidden()) continue;
        rejilla_->addWidget(opcion, lugar / kPorFila, lugar % kPorFila);
        ++lugar;
    }
    // Room for all of them, hidden ones included: showing them again moves nothing else.
    const int filas = (static_cast<int>(opciones_.size()) + kPorFila - 1) / kPorFila;
    for (int columna = 0; columna < kPorFila; ++columna) rejilla_->setColumnMinimumWidth(columna, anchura);
    setMinimumSize(kPorFila * anchura + (kPorFila - 1) * rejilla_->horizontalSpacing(),
                   filas * altura + (filas - 1) * rejilla_->verticalSpacing());
}

}  // namespace telvane
