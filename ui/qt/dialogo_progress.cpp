#include "ui/qt/dialogo_progress.h"

#include <QCloseEvent>
#include <QGridLayout>

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
    for (auto* quieto : {barra, boton}) {
        auto politica = quieto->sizePolicy();
        politica.setRetainSizeWhenHidden(true);
        quieto->setSizePolicy(politica);
    }
    rejilla->addWidget(barra, 0, 0, 1, 2);
    rejilla->addWidget(vinculos_.crear(forma.Label1, this), 1, 0);
    rejilla->addWidget(boton, 1, 1, Qt::AlignRight);
    rejilla->setColumnStretch(0, 1);
    setMinimumWidth(fontMetrics().averageCharWidth() * kAnchoEnLetras);
    observacion_ = forma.observar({.alCambiar = {},
                                   .alCambiarForma = [this] { setWindowTitle(aQt(forma_.caption())); },
                                   .alImprimir = {}});
}

void DialogoProgress::reject() {
    vinculos_.usuario().pulsar(forma_.Command45);
}

void DialogoProgress::closeEvent(QCloseEvent* suceso) {
    suceso->ignore();
    reject();
}

}  // namespace telvane
