#include "ui/qt/franja_diagnostico.h"

#include "ui/qt/medida_pantalla.h"

namespace telvane {

namespace {

constexpr int kFilas = 3;
// A line, and the bar to move along it.
constexpr int kFilasDondeHayPocas = 2;

}  // namespace

FranjaDiagnostico::FranjaDiagnostico(const Formulario& forma, QWidget* padre)
    : VistaLineas(padre, pocasLineas(*padre) ? kFilasDondeHayPocas : kFilas), forma_(forma) {
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
