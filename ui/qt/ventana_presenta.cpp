#include "ui/qt/ventana_presenta.h"

#include <QCloseEvent>
#include <QImageReader>
#include <QPainter>
#include <QWindow>

#include "ui/qt/texto_qt.h"

namespace telvane {

namespace {

constexpr QSize kMedida(480, 280);

// The picture is drawn for dense displays; reading it at the size that is needed costs less than scaling it
// later.
QPixmap leerImagen(qreal densidad) {
    QImageReader lector(QStringLiteral(":/telvane/presenta.jpg"));
    lector.setScaledSize((QSizeF(kMedida) * densidad).toSize());
    auto imagen = QPixmap::fromImageReader(&lector);
    imagen.setDevicePixelRatio(densidad);
    return imagen;
}

}  // namespace

VentanaPresenta::VentanaPresenta(FormaPresenta& forma, QWidget& principal)
    : QWidget(nullptr, Qt::SplashScreen | Qt::FramelessWindowHint | Qt::WindowDoesNotAcceptFocus),
      principal_(principal),
      imagen_(leerImagen(principal.devicePixelRatioF())) {
    setObjectName(aQt(forma.nombre()));
    setWindowTitle(aQt(forma.caption()));
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setFixedSize(kMedida);
    move(principal.frameGeometry().center() - rect().center());
}

void VentanaPresenta::paintEvent(QPaintEvent*) {
    QPainter pintor(this);
    pintor.setRenderHint(QPainter::SmoothPixmapTransform);
    pintor.drawPixmap(rect(), imagen_);
}

// Window managers keep it above the main window for as long as it belongs to it.
void VentanaPresenta::showEvent(QShowEvent* suceso) {
    windowHandle()->setTransientParent(apartada_ ? nullptr : principal_.windowHandle());
    QWidget::showEvent(suceso);
}

void VentanaPresenta::mousePressEvent(QMouseEvent*) {
    apartada_ = true;
    hide();
    show();
    principal_.raise();
    principal_.activateWindow();
}

void VentanaPresenta::closeEvent(QCloseEvent* suceso) {
    suceso->ignore();
}

}  // namespace telvane
