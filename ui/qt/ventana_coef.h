// The sensor coefficients form: sixteen labelled rows of two fields.
#pragma once

#include <QWidget>

#include "ui/forma_coef.h"
#include "ui/qt/vinculos.h"

class QGridLayout;

namespace telvane {

class CuerpoDeslizable;

// Not modal. Closing it by its frame or with Escape is a click on "Salir".
class VentanaCoef final : public QWidget {
   public:
    VentanaCoef(FormaCoef& forma, Usuario usuario, QWidget* principal);

   protected:
    bool focusNextPrevChild(bool siguiente) override;
    void closeEvent(QCloseEvent* suceso) override;
    void keyPressEvent(QKeyEvent* suceso) override;

   private:
    void centrar(const QWidget& principal);
    // Adds the rows of one block from fila and campo on; the next free row comes back.
    int bloque(QGridLayout& rejilla, int fila, Control& titulo,
               const std::vector<std::unique_ptr<Control>>& rotulos, std::size_t campo);
    QWidget* botones();
    QWidget* rotulo(Control& control);

    FormaCoef& forma_;
    Vinculos vinculos_;
    CuerpoDeslizable* campos_;
};

}  // namespace telvane
