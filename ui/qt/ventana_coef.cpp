#include "ui/qt/ventana_coef.h"

#include <algorithm>

#include <QCloseEvent>
#include <QGridLayout>
#include <QKeyEvent>
#include <QScreen>

#include "ui/qt/cuerpo_deslizable.h"
#include "ui/qt/fila_partible.h"
#include "ui/qt/letras.h"
#include "ui/qt/medida_pantalla.h"
#include "ui/qt/texto_qt.h"

namespace telvane {

namespace {

constexpr int kColumnaRotulo = 0;
constexpr int kColumnaFactor = 1;
constexpr int kColumnaSuma = 2;
constexpr int kEntreBloques = 14;

}  // namespace

VentanaCoef::VentanaCoef(FormaCoef& forma, Usuario usuario, QWidget* principal)
    : QWidget(principal, Qt::Window),
      forma_(forma),
      vinculos_(forma, std::move(usuario)),
      campos_(new CuerpoDeslizable(this)) {
    setObjectName(aQt(forma.nombre()));
    setWindowTitle(aQt(forma.caption()));
    auto* todo = new QVBoxLayout(this);
    auto* rejilla = new QGridLayout;
    rejilla->setVerticalSpacing(4);
    rejilla->setHorizontalSpacing(10);
    // The heading of both columns: the first field multiplies the voltage, the second is added.
    rejilla->addWidget(rotulo(forma.Label6), 0, kColumnaFactor, 1, 2, Qt::AlignHCenter);
    int fila = bloque(*rejilla, 0, forma.Label1, forma.Label4, 0);
    rejilla->addWidget(vinculos_.crear(forma.Line1, this), fila, 0, 1, 3);
    rejilla->setRowMinimumHeight(fila, kEntreBloques);
    bloque(*rejilla, fila + 1, forma.Label2, forma.Label3, FormaCoef::kFilas * 2);
    campos_->agregar(rejilla, 1);
    todo->addWidget(campos_, 1);
    todo->addSpacing(kEntreBloques);
    todo->addWidget(botones());
    if (principal != nullptr) centrar(*principal);
}

// In front of the window that it belongs to, where the screen has room for it.
void VentanaCoef::centrar(const QWidget& principal) {
    resize(cabeEnPantalla(*this, sizeHint()));
    const auto pantalla = principal.screen()->availableGeometry();
    QRect lugar(QPoint(), size() + kMarcoDeVentana);
    lugar.moveCenter(principal.frameGeometry().center());
    move(std::max(pantalla.left(), std::min(lugar.left(), pantalla.right() - lugar.width())),
         std::max(pantalla.top(), std::min(lugar.top(), pantalla.bottom() - lugar.height())));
}

QWidget* VentanaCoef::rotulo(Control& control) {
    auto* widget = vinculos_.crear(control, this);
    widget->setFont(letraDeColumnas());
    return widget;
}

int VentanaCoef::bloque(QGridLayout& rejilla, int fila, Control& titulo,
                        const std::vector<std::unique_ptr<Control>>& rotulos, std::size_t campo) {
    auto* encabezado = rotulo(titulo);
    auto fuente = encabezado->font();
    fuente.setBold(true);
    encabezado->setFont(fuente);
    rejilla.addWidget(encabezado, fila++, kColumnaRotulo);
    for (const auto& control : rotulos) {
        rejilla.addWidget(rotulo(*control), fila, kColumnaRotulo, Qt::AlignRight | Qt::AlignVCenter);
        for (const int columna : {kColumnaFactor, kColumnaSuma}) {
            auto* widget = vinculos_.crear(*forma_.Text[campo++], this);
            widget->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
            rejilla.addWidget(widget, fila, columna);
        }
        ++fila;
    }
    return fila;
}

QWidget* VentanaCoef::botones() {
    auto* partida = new FilaPartible(this);
    auto& fila = partida->fila();
    fila.setSpacing(6);
    fila.addWidget(rotulo(forma_.Label5));
    fila.addStretch();
    for (auto* control : {&forma_.Command2, &forma_.Command3, &forma_.Command1}) {
        fila.addWidget(vinculos_.crear(*control, partida));
    }
    return partida;
}

bool VentanaCoef::focusNextPrevChild(bool siguiente) {
    const bool hay = QWidget::focusNextPrevChild(siguiente);
    if (hay) campos_->mostrarFoco();
    return hay;
}

void VentanaCoef::closeEvent(QCloseEvent* suceso) {
    suceso->ignore();
    vinculos_.usuario().pulsar(forma_.Command1);
}

void VentanaCoef::keyPressEvent(QKeyEvent* suceso) {
    if (suceso->key() == Qt::Key_Escape) {
        close();
    } else {
        QWidget::keyPressEvent(suceso);
    }
}

}  // namespace telvane
