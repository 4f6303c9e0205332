// The reference for start-up: an empty form of the toolkit with as many controls of each kind as the main
// form has, up to its first frame.
#include <QApplication>
#include <QCheckBox>
#include <QFrame>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>

#include "bench/primer_cuadro.h"
#include "ui/forma_inicio.h"

namespace {

QWidget* widgetDe(const telvane::Control& control) {
    using telvane::Clase;
    switch (control.clase()) {
        case Clase::boton:
            return new QPushButton(QString::fromStdString(control.caption()));
        case Clase::opcion:
            return new QRadioButton(QString::fromStdString(control.caption()));
        case Clase::casilla:
            return new QCheckBox(QString::fromStdString(control.caption()));
        case Clase::rotulo:
            return new QLabel(QString::fromStdString(control.caption()));
        case Clase::texto:
        case Clase::mascara:
            return new QLineEdit;
        case Clase::textoLargo:
            return new QPlainTextEdit;
        case Clase::linea: {
            auto* linea = new QFrame;
            linea->setFrameShape(QFrame::HLine);
            return linea;
        }
        default:
            return nullptr;
    }
}

}  // namespace

int main(int argc, char** argv) {
    QApplication::setStyle(QStringLiteral("fusion"));
    QApplication aplicacion(argc, argv);
    telvane::bench::HastaElPrimerCuadro hasta;
    aplicacion.installEventFilter(&hasta);
    QWidget ventana;
    auto* rejilla = new QGridLayout(&ventana);
    constexpr int kColumnas = 4;
    int lugar = 0;
    const telvane::FormaInicio forma;
    for (const auto* control : forma.controles()) {
        auto* widget = widgetDe(*control);
        if (widget == nullptr) continue;
        rejilla->addWidget(widget, lugar / kColumnas, lugar % kColumnas);
        ++lugar;
    }
    ventana.show();
    return QApplication::exec();
}
