#include "ui/qt/vista_lineas_accesible.h"

#include <QAccessible>
#include <QAccessibleWidget>

#include "ui/qt/vista_lineas.h"

namespace telvane {

namespace {

class VistaAccesible final : public QAccessibleWidget, public QAccessibleTextInterface {
   public:
    explicit VistaAccesible(VistaLineas* vista) : QAccessibleWidget(vista, QAccessible::EditableText) {}

    void* interface_cast(QAccessible::InterfaceType tipo) override {
        if (tipo == QAccessible::TextInterface) return static_cast<QAccessibleTextInterface*>(this);
        return QAccessibleWidget::interface_cast(tipo);
    }

    QAccessible::State state() const override {
        auto estado = QAccessibleWidget::state();
        estado.readOnly = true;
        estado.multiLine = true;
        return estado;
    }

    // Scroll bars and viewport are of no use to a reader.
    int childCount() const override { return 0; }
    QAccessibleInterface* child(int) const override { return nullptr; }

    QString text(QAccessible::Text cual) const override {
        return cual == QAccessible::Value ? vista().todo() : QAccessibleWidget::text(cual);
    }

    QString text(int inicio, int fin) const override { return vista().todo().mid(inicio, fin - inicio); }
    int characterCount() const override { return static_cast<int>(vista().todo().size()); }

    // There is no caret and no selection within a line.
    void selection(int, int* inicio, int* fin) const override { *inicio = *fin = 0; }
    int selectionCount() const override { return 0; }
    void addSelection(int, int) override {}
    void removeSelection(int) override {}
    void setSelection(int, int, int) override {}
    int cursorPosition() const override { return 0; }
    void setCursorPosition(int) override {}
    QRect characterRect(int) const override { return rect(); }
    int offsetAtPoint(const QPoint&) const override { return -1; }
    void scrollToSubstring(int, int) override {}
    QString attributes(int, int* inicio, int* fin) const override {
        *inicio = 0;
        *fin = characterCount();
        return {};
    }

   private:
    VistaLineas& vista() const { return *static_cast<VistaLineas*>(widget()); }
};

QAccessibleInterface* fabrica(const QString&, QObject* objeto) {
    auto* vista = dynamic_cast<VistaLineas*>(objeto);
    return vista == nullptr ? nullptr : new VistaAccesible(vista);
}

}  // namespace

void instalarAccesibilidadDeVistas() {
    // The toolkit keeps a factory once, however often it is handed in.
    QAccessible::installFactory(fabrica);
}

}  // namespace telvane
