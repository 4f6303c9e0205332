#include "ui/qt/rejilla_opciones.h"

#include <algorithm>

#include <QEvent>
#include <QGridLayout>

#include "ui/qt/medida_pantalla.h"

namespace telvane {

namespace {

constexpr int kPorFila = 3;

// Beside their label they have a bit more than half of the window.
int porFila(const QWidget& rejilla, int anchura) {
    return std::clamp(anchoDeContenido(rejilla) * 11 / 20 / std::max(anchura, 1), 1, kPorFila);
}

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
    int anchura = 0;
    int altura = 0;
    for (auto* opcion : opciones_) {
        rejilla_->removeWidget(opcion);
        anchura = std::max(anchura, opcion->sizeHint().width());
        altura = std::max(altura, opcion->sizeHint().height());
    }
    const int columnas = porFila(*this, anchura);
    int lugar = 0;
    for (auto* opcion : opciones_) {
        if (opcion->isHidden()) continue;
        rejilla_->addWidget(opcion, lugar / columnas, lugar % columnas);
        ++lugar;
    }
    // Room for all of them, hidden ones included: showing them again moves nothing else.
    const int filas = (static_cast<int>(opciones_.size()) + columnas - 1) / columnas;
    for (int columna = 0; columna < columnas; ++columna) rejilla_->setColumnMinimumWidth(columna, anchura);
    setMinimumSize(columnas * anchura + (columnas - 1) * rejilla_->horizontalSpacing(),
                   filas * altura + (filas - 1) * rejilla_->verticalSpacing());
}

}  // namespace telvane
