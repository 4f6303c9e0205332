#include "ui/qt/ventana_presenta.h"

#include <QCloseEvent>
#include <QImageReader>
#include <QKeyEvent>
#include <QPainter>
#include <QScreen>
#include <QWindow>

#include "ui/qt/tapada.h"
#include "ui/qt/texto_qt.h"

namespace telvane {

namespace {

constexpr QSize kMedida(480, 280);
// Of the screen: around it the window stays in sight, with its buttons.
constexpr double kParteDePantalla = 0.75;

QSize medidaEn(const QWidget& principal) {
    const auto* pantalla = principal.screen();
    return pantalla == nullptr ? kMedida : medidaDePresenta(pantalla->availableSize());
}

// The picture is drawn for dense displays; reading it at the size that is needed costs less than scaling it
// later.
QPixmap leerImagen(const QSize& medida, qreal densidad) {
    QImageReader lector(QStringLiteral(":/telvane/presenta.jpg"));
    lector.setScaledSize((QSizeF(medida) * densidad).toSize());
    auto imagen = QPixmap::fromImageReader(&lector);
    imagen.setDevicePixelRatio(densidad);
    return imagen;
}

}  // namespace

QSize medidaDePresenta(const QSize& pantalla) {
    const auto sitio = pantalla * kParteDePantalla;
    return kMedida.boundedTo(sitio) == kMedida ? kMedida : kMedida.scaled(sitio, Qt::KeepAspectRatio);
}

VentanaPresenta::VentanaPresenta(FormaPresenta& forma, QWidget& principal)
    : QWidget(nullptr, Qt::SplashScreen | Qt::FramelessWindowHint | Qt::WindowDoesNotAcceptFocus),
      principal_(principal),
      imagen_(leerImagen(medidaEn(principal), principal.devicePixelRatioF())) {
    setObjectName(aQt(forma.nombre()));
    setWindowTitle(aQt(forma.caption()));
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setFixedSize(medidaEn(principal));
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
    // Keys come to the window of the system first: whoever has the focus there may keep them.
    if (auto* ventana = principal_.windowHandle()) ventana->installEventFilter(this);
    QWidget::showEvent(suceso);
}

void VentanaPresenta::mousePressEvent(QMouseEvent*) {
    apartar();
    principal_.activateWindow();
}

// A held key is still the answer to the box that it closed.
bool VentanaPresenta::eventFilter(QObject*, QEvent* suceso) {
    const bool tecla = suceso->type() == QEvent::KeyPress && !static_cast<QKeyEvent*>(suceso)->isAutoRepeat();
    if (tecla && !apartada_ && !tapada(principal_)) apartar();
    return false;
}

void VentanaPresenta::apartar() {
    apartada_ = true;
    hide();
    show();
    principal_.raise();
}

void VentanaPresenta::closeEvent(QCloseEvent* suceso) {
    suceso->ignore();
}

}  // namespace telvane
