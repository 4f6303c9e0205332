#include "ui/qt/franja_diagnostico.h"

#include <QScreen>

namespace telvane {

namespace {

constexpr int kFilas = 3;
// A line, and the bar to move along it, where the screen has few lines.
constexpr int kFilasEnPantallaChica = 2;
constexpr int kLineasDePantallaChica = 22;

int filasPara(const QWidget& ventana) {
    const auto* pantalla = ventana.screen();
    const bool chica = pantalla != nullptr && pantalla->availableSize().height() <
                                                  kLineasDePantallaChica * ventana.fontMetrics().height();
    return chica ? kFilasEnPantallaChica : kFilas;
}

}  // namespace

FranjaDiagnostico::FranjaDiagnostico(const Formulario& forma, QWidget* padre)
    : VistaLineas(padre, filasPara(*padre)), forma_(forma) {
    setObjectName(QStringLiteral("Diagnostico"));
    setAccessibleName(objectName());
    setFrameShape(QFrame::NoFrame);
    sinSangria();
    seguirElFinal(true);
    seleccionable(false);
    // Part of the window's surface, not a field.
    viewport()->setBackgroundRole(QPalette::Window);
    viewport()->setForegroundRole(QPalette::WindowText);
    refrescar();
}

void FranjaDiagnostico::refrescar() {
    junto_.clear();
    for (const auto& linea : forma_.lineas()) junto_.append(linea).append("\n");
    texto(junto_);
}

}  // namespace telvane
