#include "ui/qt/campo_linea.h"

#include <algorithm>

#include <QFocusEvent>
#include <QKeyEvent>
#include <QStyleOptionFrame>

#include "ui/teclas.h"

namespace telvane {

namespace {

constexpr int kMinimoCaracteres = 6;
constexpr int kMinimoVisible = 16;
constexpr int kMargenTexto = 6;

int codigoDe(const QKeyEvent& tecla) {
    if (tecla.key() == Qt::Key_Return || tecla.key() == Qt::Key_Enter) return kTeclaIntro;
    if (tecla.key() == Qt::Key_Backspace) return kTeclaRetroceso;
    if (tecla.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)) return 0;
    const auto texto = tecla.text();
    return texto.isEmpty() || !texto.front().isPrint() ? 0 : texto.front().unicode();
}

}  // namespace

CampoLinea::CampoLinea(QWidget* padre) : QLineEdit(padre) {
    setTextMargins(kMargenTexto / 2, 1, kMargenTexto / 2, 1);
    setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Fixed);
}

void CampoLinea::bloquear(bool si) {
    setReadOnly(si);
    colorear();
}

void CampoLinea::anchoEnCaracteres(int caracteres) {
    caracteres_ = caracteres;
    updateGeometry();
}

// The widest digit or ordinary letter counts for a character: an average one would cut long numbers.
QSize CampoLinea::sizeHint() const {
    auto pista = QLineEdit::sizeHint();
    if (caracteres_ == 0) return pista;
    const auto fuente = fontMetrics();
    const int letra = std::max(fuente.averageCharWidth(), fuente.horizontalAdvance(QLatin1Char('0')));
    QStyleOptionFrame opcion;
    initStyleOption(&opcion);
    const QSize contenido(letra * std::max(caracteres_, kMinimoCaracteres) + 2 * kMargenTexto,
                          fuente.height());
    pista.setWidth(style()->sizeFromContents(QStyle::CT_LineEdit, &opcion, contenido, this).width());
    return pista;
}

QSize CampoLinea::minimumSizeHint() const {
    auto pista = QLineEdit::minimumSizeHint();
    if (caracteres_ > 0)
        pista.setWidth(std::min(sizeHint().width(), fontMetrics().averageCharWidth() * kMinimoVisible));
    return pista;
}

void CampoLinea::keyPressEvent(QKeyEvent* suceso) {
    const int codigo = codigoDe(*suceso);
    // Held, it is one order.
    if (codigo == kTeclaIntro && suceso->isAutoRepeat()) return;
    if (codigo != 0 && filtro_ && filtro_(codigo) == 0) {
        suceso->accept();
        return;
    }
    QLineEdit::keyPressEvent(suceso);
}

// What can only be read is not marked as if the next key would replace it.
void CampoLinea::focusInEvent(QFocusEvent* suceso) {
    QLineEdit::focusInEvent(suceso);
    if (isReadOnly() && suceso->reason() != Qt::MouseFocusReason) home(false);
}

void CampoLinea::focusOutEvent(QFocusEvent* suceso) {
    QLineEdit::focusOutEvent(suceso);
    const auto motivo = suceso->reason();
    if (motivo == Qt::ActiveWindowFocusReason || motivo == Qt::PopupFocusReason) return;
    if (alSalir_) alSalir_();
}

void CampoLinea::changeEvent(QEvent* suceso) {
    QLineEdit::changeEvent(suceso);
    if (suceso->type() == QEvent::PaletteChange || suceso->type() == QEvent::ApplicationPaletteChange)
        colorear();
}

// A locked field has the window's own ground, in whatever colours the desktop has now.
void CampoLinea::colorear() {
    if (coloreando_) return;
    coloreando_ = true;
    QPalette propios;
    propios.setResolveMask(0);
    setPalette(propios);
    if (isReadOnly()) {
        const auto colores = palette();
        for (const auto grupo : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
            propios.setColor(grupo, QPalette::Base, colores.color(grupo, QPalette::Window));
        }
        setPalette(propios);
    }
    coloreando_ = false;
}

}  // namespace telvane
