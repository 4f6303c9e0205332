#include "ui/qt/boton_holgado.h"

#include <algorithm>

#include <QKeyEvent>
#include <QStyleOptionButton>
#include <QStylePainter>

#include "ui/qt/medida_pantalla.h"

namespace telvane {

namespace {

constexpr int kModoDelTexto = Qt::AlignCenter | Qt::TextWordWrap | Qt::TextShowMnemonic;

}  // namespace

BotonHolgado::BotonHolgado(QWidget* padre) : QPushButton(padre) {
    // It may shrink to its minimum.
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

QSize BotonHolgado::sizeHint() const {
    const auto pista = QPushButton::sizeHint();
    const int letra = fontMetrics().height();
    return {pista.width() + letra, std::max(pista.height(), letra * 7 / 4)};
}

QSize BotonHolgado::minimumSizeHint() const {
    const auto pista = sizeHint();
    return {std::min(pista.width(), anchoDeContenido(*this)), pista.height()};
}

int BotonHolgado::anchoEntero() const {
    return QPushButton::sizeHint().width();
}

QRect BotonHolgado::lugarDelTexto() const {
    const int aire = fontMetrics().height() / 2;
    return rect().adjusted(aire, 0, -aire, 0);
}

void BotonHolgado::keyPressEvent(QKeyEvent* suceso) {
    if (!suceso->isAutoRepeat()) QPushButton::keyPressEvent(suceso);
}

void BotonHolgado::resizeEvent(QResizeEvent* suceso) {
    QPushButton::resizeEvent(suceso);
    const int alto = partido() ? fontMetrics().boundingRect(lugarDelTexto(), kModoDelTexto, text()).height() +
                                     fontMetrics().height() * 3 / 4
                               : 0;
    if (alto != minimumHeight()) setMinimumHeight(alto);
}

// The toolkit's own buttons have captions of one line.
void BotonHolgado::paintEvent(QPaintEvent* suceso) {
    if (!partido()) {
        QPushButton::paintEvent(suceso);
        return;
    }
    QStylePainter pintor(this);
    QStyleOptionButton opcion;
    initStyleOption(&opcion);
    const auto texto = opcion.text;
    opcion.text.clear();
    pintor.drawControl(QStyle::CE_PushButton, opcion);
    pintor.drawItemText(lugarDelTexto(), kModoDelTexto, opcion.palette, isEnabled(), texto,
                        QPalette::ButtonText);
}

}  // namespace telvane
