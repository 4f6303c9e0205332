// Panels side by side; one below the other where the window is too narrow for large letters. What does not
// fit in height scrolls, nothing is cut.
#pragma once

#include <QScrollArea>

class QBoxLayout;
class QLayout;

namespace telvane {

class CuerpoDeslizable final : public QScrollArea {
   public:
    explicit CuerpoDeslizable(QWidget* padre);

    // From left to right, sharing the spare width by weight.
    void agregar(QLayout* panel, int peso);

    // What got the keyboard comes into sight. The toolkit sees to it only where the one before was in here as
    // well.
    void mostrarFoco();

    QSize sizeHint() const override;

   protected:
    void resizeEvent(QResizeEvent* suceso) override;
    bool eventFilter(QObject* objeto, QEvent* suceso) override;

   private:
    int anchoAlLado() const;
    void disponer();

    QBoxLayout* paneles_;
};

}  // namespace telvane
