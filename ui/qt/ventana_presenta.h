// The splash: one picture in the middle of the main window.
#pragma once

#include <QPixmap>
#include <QWidget>

#include "ui/forma_presenta.h"

namespace telvane {

// How large the picture is on a screen of this size.
QSize medidaDePresenta(const QSize& pantalla);

// Closes when its form does and not otherwise. A click on it brings the main window in front of it, and so
// does a key in that window, which is how an operator who declined the connection gets on with the work.
class VentanaPresenta final : public QWidget {
   public:
    VentanaPresenta(FormaPresenta& forma, QWidget& principal);

   protected:
    void paintEvent(QPaintEvent* suceso) override;
    void showEvent(QShowEvent* suceso) override;
    void mousePressEvent(QMouseEvent* suceso) override;
    void closeEvent(QCloseEvent* suceso) override;
    bool eventFilter(QObject* objeto, QEvent* suceso) override;

   private:
    void apartar();

    QWidget& principal_;
    QPixmap imagen_;
    bool apartada_ = false;  // sent behind the main window
};

}  // namespace telvane
