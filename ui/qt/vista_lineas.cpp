#include "ui/qt/vista_lineas.h"

#include <algorithm>

#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QPainter>
#include <QScrollBar>
#include <QTimer>

#include "ui/qt/texto_qt.h"
#include "ui/qt/vista_lineas_accesible.h"

namespace telvane {

namespace {

constexpr int kMargen = 4;
constexpr int kFilasMinimas = 3;
constexpr int kColumnasPropuestas = 48;
constexpr int kColumnasMinimas = 16;
constexpr std::size_t kTextoAnunciable = 4096;  // bytes
constexpr int kEntreAnuncios = 1000;            // milliseconds

}  // namespace

VistaLineas::VistaLineas(QWidget* padre, int filas)
    : QAbstractScrollArea(padre), filas_(filas), sangria_(kMargen), anuncio_(new QTimer(this)) {
    anuncio_->setSingleShot(true);
    anuncio_->setInterval(kEntreAnuncios);
    connect(anuncio_, &QTimer::timeout, this, &VistaLineas::anunciarCambio);
    instalarAccesibilidadDeVistas();
    setFocusPolicy(Qt::StrongFocus);
    viewport()->setCursor(Qt::IBeamCursor);
    // A wheel turn over the pane moves the pane; the focus ring stays where it was.
    setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
}

void VistaLineas::sinSangria() {
    sangria_ = 0;
    medir();
    ajustarBarras();
}

void VistaLineas::seleccionable(bool si) {
    seleccionable_ = si;
    viewport()->setCursor(si ? Qt::IBeamCursor : Qt::ArrowCursor);
}

void VistaLineas::texto(std::string_view utf8) {
    texto_ = utf8;
    ancla_ = actual_ = -1;
    indexar();
    medir();
    ajustarBarras();
    verticalScrollBar()->setValue(seguirElFinal_ ? verticalScrollBar()->maximum() : 0);
    viewport()->update();
    anunciar();
}

void VistaLineas::indexar() {
    inicios_.clear();
    const auto lineas = std::count(texto_.begin(), texto_.end(), '\n');
    inicios_.reserve(static_cast<std::size_t>(lineas) + 1);
    std::size_t inicio = 0;
    while (inicio < texto_.size()) {
        inicios_.push_back(static_cast<std::uint32_t>(inicio));
        const auto largo = bytesDeLinea(this->lineas() - 1).size();
        const auto fin = inicio + largo;
        const bool par = fin + 1 < texto_.size() && texto_[fin] == '\r' && texto_[fin + 1] == '\n';
        inicio = fin + (par ? 2 : 1);
    }
    inicios_.shrink_to_fit();
}

// Up to the LF first, then for a CR within: both searches run at the speed of memory.
std::string_view VistaLineas::bytesDeLinea(int indice) const {
    const auto resto = texto_.substr(inicios_[static_cast<std::size_t>(indice)]);
    const auto linea = resto.substr(0, resto.find('\n'));
    return linea.substr(0, linea.find('\r'));
}

QString VistaLineas::linea(int indice) const {
    return aQt(bytesDeLinea(indice));
}

QString VistaLineas::todo() const {
    QString junto;
    junto.reserve(static_cast<qsizetype>(texto_.size()));
    for (int i = 0; i < lineas(); ++i) junto += linea(i) + QLatin1Char('\n');
    return junto;
}

// The line of most bytes stands for the widest: measuring every one would cost more than showing them.
void VistaLineas::medir() {
    int larga = -1;
    std::size_t bytes = 0;
    for (int i = 0; i < lineas(); ++i) {
        if (const auto suyos = bytesDeLinea(i).size(); suyos > bytes) {
            bytes = suyos;
            larga = i;
        }
    }
    ancho_ = larga < 0 ? 0 : fontMetrics().horizontalAdvance(linea(larga)) + 2 * sangria_;
}

int VistaLineas::alto() const {
    return fontMetrics().lineSpacing();
}

int VistaLineas::filasEnteras() const {
    return std::max(1, (viewport()->height() - 2 * kMargen) / alto());
}

void VistaLineas::ajustarBarras() {
    auto* vertical = verticalScrollBar();
    vertical->setRange(0, std::max(0, lineas() - filasEnteras()));
    vertical->setPageStep(filasEnteras());
    vertical->setSingleStep(1);
    auto* horizontal = horizontalScrollBar();
    horizontal->setRange(0, std::max(0, ancho_ - viewport()->width()));
    horizontal->setPageStep(viewport()->width());
    horizontal->setSingleStep(fontMetrics().averageCharWidth() * 2);
}

QSize VistaLineas::sizeHint() const {
    const int marco = 2 * frameWidth();
    return {fontMetrics().averageCharWidth() * kColumnasPropuestas + 2 * kMargen + marco,
            alto() * filas_ + 2 * kMargen + marco};
}

QSize VistaLineas::minimumSizeHint() const {
    const int marco = 2 * frameWidth();
    return {fontMetrics().averageCharWidth() * kColumnasMinimas + 2 * kMargen + marco,
            alto() * std::min(filas_, kFilasMinimas) + 2 * kMargen + marco};
}

void VistaLineas::paintEvent(QPaintEvent* suceso) {
    QPainter pintor(viewport());
    const auto colores = isActiveWindow() ? QPalette::Active : QPalette::Inactive;
    const int primera = verticalScrollBar()->value();
    const int x = sangria_ - horizontalScrollBar()->value();
    const auto marcadas = seleccion();
    int y = kMargen;
    // A line that has no room is not shown by half.
    const int hasta = std::min(lineas(), primera + filasEnteras());
    for (int i = primera; i < hasta && y < suceso->rect().bottom(); ++i, y += alto()) {
        const bool marcada = i >= marcadas.primera && i <= marcadas.ultima;
        if (marcada) {
            pintor.fillRect(0, y, viewport()->width(), alto(), palette().color(colores, QPalette::Highlight));
        }
        pintor.setPen(palette().color(isEnabled() ? colores : QPalette::Disabled,
                                      marcada ? QPalette::HighlightedText : viewport()->foregroundRole()));
        pintor.drawText(x, y + fontMetrics().ascent(), linea(i));
    }
}

void VistaLineas::resizeEvent(QResizeEvent* suceso) {
    QAbstractScrollArea::resizeEvent(suceso);
    ajustarBarras();
    if (seguirElFinal_) verticalScrollBar()->setValue(verticalScrollBar()->maximum());
}

void VistaLineas::changeEvent(QEvent* suceso) {
    QAbstractScrollArea::changeEvent(suceso);
    if (suceso->type() != QEvent::FontChange && suceso->type() != QEvent::StyleChange) return;
    medir();
    ajustarBarras();
    updateGeometry();
}

void VistaLineas::scrollContentsBy(int, int) {
    viewport()->update();
}

void VistaLineas::keyPressEvent(QKeyEvent* suceso) {
    if (suceso->matches(QKeySequence::Copy)) {
        copiar();
    } else if (suceso->matches(QKeySequence::SelectAll)) {
        seleccionar(0, lineas() - 1);
    } else if (suceso->key() == Qt::Key_Home) {
        verticalScrollBar()->setValue(0);
    } else if (suceso->key() == Qt::Key_End) {
        verticalScrollBar()->setValue(verticalScrollBar()->maximum());
    } else {
        QAbstractScrollArea::keyPressEvent(suceso);
    }
}

int VistaLineas::lineaEn(int y) const {
    const int fila = y < kMargen ? -1 : (y - kMargen) / alto();
    return std::clamp(verticalScrollBar()->value() + fila, 0, std::max(0, lineas() - 1));
}

void VistaLineas::mousePressEvent(QMouseEvent* suceso) {
    if (suceso->button() != Qt::LeftButton || lineas() == 0) return;
    const int cual = lineaEn(suceso->position().toPoint().y());
    seleccionar(suceso->modifiers() & Qt::ShiftModifier && ancla_ >= 0 ? ancla_ : cual, cual);
}

void VistaLineas::mouseMoveEvent(QMouseEvent* suceso) {
    if (!(suceso->buttons() & Qt::LeftButton) || ancla_ < 0) return;
    const int cual = lineaEn(suceso->position().toPoint().y());
    const int primera = verticalScrollBar()->value();
    if (cual < primera) verticalScrollBar()->setValue(cual);
    if (cual >= primera + filasEnteras()) verticalScrollBar()->setValue(cual - filasEnteras() + 1);
    seleccionar(ancla_, cual);
}

void VistaLineas::contextMenuEvent(QContextMenuEvent* suceso) {
    if (!seleccionable_) return;
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    auto* accionCopiar = menu->addAction(QStringLiteral("Copiar"), this, [this] { copiar(); });
    accionCopiar->setEnabled(seleccion().ultima >= 0);
    auto* accionTodo =
        menu->addAction(QStringLiteral("Seleccionar todo"), this, [this] { seleccionar(0, lineas() - 1); });
    accionTodo->setEnabled(lineas() > 0);
    menu->popup(suceso->globalPos());
}

VistaLineas::Tramo VistaLineas::seleccion() const {
    if (ancla_ < 0) return {};
    return {std::min(ancla_, actual_), std::max(ancla_, actual_)};
}

void VistaLineas::seleccionar(int ancla, int actual) {
    if (!seleccionable_ || lineas() == 0) return;
    ancla_ = ancla;
    actual_ = actual;
    viewport()->update();
}

void VistaLineas::copiar() const {
    const auto marcadas = seleccion();
    QString texto;
    for (int i = marcadas.primera; i <= marcadas.ultima; ++i) texto += linea(i) + QLatin1Char('\n');
    if (!texto.isEmpty()) QApplication::clipboard()->setText(texto);
}

// A screen reader is told of what is new: the line that was printed, or a short text as it stands. A year of
// samples is there to be read, not to be told.
void VistaLineas::anunciar() {
    if (!QAccessible::isActive()) return;
    if (!seguirElFinal_) {
        if (texto_.size() <= kTextoAnunciable && !anuncio_->isActive()) anuncio_->start();
        return;
    }
    if (lineas() == 0) return;
    const auto ultima = linea(lineas() - 1);
    QAccessibleTextInsertEvent suceso(this, static_cast<int>(todo().size() - ultima.size() - 1), ultima);
    QAccessible::updateAccessibility(&suceso);
}

void VistaLineas::anunciarCambio() {
    const auto ahora = texto_.size() <= kTextoAnunciable ? todo() : QString();
    if (ahora == anunciado_) return;
    QAccessibleTextUpdateEvent suceso(this, 0, anunciado_, ahora);
    anunciado_ = ahora;
    QAccessible::updateAccessibility(&suceso);
}

}  // namespace telvane
