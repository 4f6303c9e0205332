#include "ui/qt/cuerpo_deslizable.h"

#include <QBoxLayout>
#include <QEvent>
#include <QScrollBar>

namespace telvane {

namespace {

constexpr int kEntrePaneles = 28;

}  // namespace

CuerpoDeslizable::CuerpoDeslizable(QWidget* padre) : QScrollArea(padre) {
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::NoFocus);
    setWidgetResizable(true);
    auto* contenido = new QWidget(this);
    paneles_ = new QHBoxLayout(contenido);
    paneles_->setContentsMargins(0, 0, 0, 0);
    setWidget(contenido);
    contenido->installEventFilter(this);
}

void CuerpoDeslizable::agregar(QLayout* panel, int peso) {
    if (paneles_->count() > 0) paneles_->addSpacing(kEntrePaneles);
    paneles_->addLayout(panel, peso);
}

void CuerpoDeslizable::mostrarFoco() {
    auto* con = window()->focusWidget();
    if (con != nullptr && widget()->isAncestorOf(con)) ensureWidgetVisible(con);
}

QSize CuerpoDeslizable::sizeHint() const {
    return widget()->sizeHint() + QSize(2, 2) * frameWidth();
}

int CuerpoDeslizable::anchoAlLado() const {
    int ancho = 0;
    for (int i = 0; i < paneles_->count(); ++i) {
        auto* panel = paneles_->itemAt(i);
        ancho +=
            panel->layout() == nullptr ? kEntrePaneles : panel->minimumSize().width() + paneles_->spacing();
    }
    return ancho;
}

void CuerpoDeslizable::disponer() {
    const bool caben = width() - verticalScrollBar()->sizeHint().width() >= anchoAlLado();
    const auto sentido = caben ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom;
    if (paneles_->direction() != sentido) paneles_->setDirection(sentido);
}

void CuerpoDeslizable::resizeEvent(QResizeEvent* suceso) {
    disponer();
    QScrollArea::resizeEvent(suceso);
}

bool CuerpoDeslizable::eventFilter(QObject* objeto, QEvent* suceso) {
    if (objeto == widget() && suceso->type() == QEvent::LayoutRequest) disponer();
    return QScrollArea::eventFilter(objeto, suceso);
}

}  // namespace telvane
