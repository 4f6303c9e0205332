#include "ui/qt/ventana_accesible.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QWidget>

namespace telvane {

namespace {

// The toolkit knows its own main windows and dialogs; ours stand on the plain class.
QAccessibleInterface* fabrica(const QString& clase, QObject* objeto) {
    auto* widget = qobject_cast<QWidget*>(objeto);
    const bool ventana = widget != nullptr && clase == QLatin1String("QWidget") && widget->isWindow() &&
                         widget->windowType() == Qt::Window;
    return ventana ? new QAccessibleWidget(widget, QAccessible::Window) : nullptr;
}

}  // namespace

void instalarAccesibilidadDeVentanas() {
    // The toolkit keeps a factory once, however often it is handed in.
    QAccessible::installFactory(fabrica);
}

}  // namespace telvane
