#include "app/qt/estilo.h"

#include <QPainter>
#include <QStyleOption>

namespace telvane {

namespace {

constexpr QRgb kMarco = 0xff93979d;
constexpr QRgb kMarcoApagado = 0xff6a6e73;
constexpr int kOscuro = 128;

bool llevaMarco(QStyle::PrimitiveElement elemento, const QStyleOption& opcion) {
    if (opcion.palette.color(QPalette::Window).lightness() >= kOscuro) return false;
    // The style draws the focus in a colour of its own.
    const bool conFoco = opcion.state.testFlag(QStyle::State_HasFocus);
    return (elemento == QStyle::PE_FrameLineEdit && !conFoco) || elemento == QStyle::PE_IndicatorCheckBox ||
           elemento == QStyle::PE_IndicatorRadioButton;
}

}  // namespace

Estilo::Estilo() : QProxyStyle(QStringLiteral("fusion")) {}

void Estilo::drawPrimitive(PrimitiveElement elemento, const QStyleOption* opcion, QPainter* pintor,
                           const QWidget* control) const {
    QProxyStyle::drawPrimitive(elemento, opcion, pintor, control);
    if (opcion == nullptr || !llevaMarco(elemento, *opcion)) return;
    constexpr qreal kMedio = 0.5;
    constexpr qreal kRedondo = 2;
    const auto marco = QRectF(opcion->rect).adjusted(kMedio, kMedio, -kMedio, -kMedio);
    pintor->save();
    pintor->setRenderHint(QPainter::Antialiasing);
    pintor->setBrush(Qt::NoBrush);
    pintor->setPen(QColor(opcion->state.testFlag(State_Enabled) ? kMarco : kMarcoApagado));
    if (elemento == PE_IndicatorRadioButton) {
        pintor->drawEllipse(marco);
    } else {
        pintor->drawRoundedRect(marco, kRedondo, kRedondo);
    }
    pintor->restore();
}

}  // namespace telvane
