#include "ui/qt/dialogo_progress.h"

#include <QCloseEvent>
#include <QGridLayout>
#include <QKeyEvent>
#include <QPushButton>

#include "ui/qt/texto_qt.h"

namespace telvane {

namespace {

constexpr int kAnchoEnLetras = 52;

}  // namespace

DialogoProgress::DialogoProgress(FormaProgress& forma, Usuario usuario, QWidget* padre)
    : QDialog(padre), forma_(forma), vinculos_(forma, std::move(usuario)) {
    setObjectName(aQt(forma.nombre()));
    setWindowTitle(aQt(forma.caption()));
    auto* rejilla = new QGridLayout(this);
    auto* barra = vinculos_.crear(forma.ProgressBar1, this);
    // The bar of an import stands where that of a download stands, without its button.
    auto* boton = vinculos_.crear(forma.Command45, this);
    static_cast<QPushButton*>(boton)->setAutoDefault(false);
    for (auto* quieto : {barra, boton}) {
        auto politica = quieto->sizePolicy();
        politica.setRetainSizeWhenHidden(true);
        quieto->setSizePolicy(politica);
    }
    rejilla->addWidget(barra, 0, 0, 1, 2);
    rejilla->addWidget(vinculos_.crear(forma.Label1, this), 1, 0);
    rejilla->addWidget(boton, 1, 1, Qt::AlignRight);
    rejilla->setColumnStretch(0, 1);
    setFocusPolicy(Qt::StrongFocus);
    setFocus();
    setMinimumWidth(fontMetrics().averageCharWidth() * kAnchoEnLetras);
    observacion_ = forma.observar({.alCambiar = {},
                                   .alCambiarForma = [this] { setWindowTitle(aQt(forma_.caption())); },
                                   .alImprimir = {}});
}

// Enter that goes on from what started the download cancels nothing, nor does a key that is held; the button
// is reached with the tabulator.
void DialogoProgress::keyPressEvent(QKeyEvent* suceso) {
    if (suceso->isAutoRepeat()) return;
    const bool intro = suceso->key() == Qt::Key_Return || suceso->key() == Qt::Key_Enter;
    if (!intro) {
        QDialog::keyPressEvent(suceso);
    } else if (auto* boton = qobject_cast<QPushButton*>(focusWidget())) {
        boton->click();
    }
}

void DialogoProgress::reject() {
    vinculos_.usuario().pulsar(forma_.Command45);
}

void DialogoProgress::closeEvent(QCloseEvent* suceso) {
    suceso->ignore();
    reject();
}

}  // namespace telvane
