// The interval options in rows of three, of two or one where the screen is narrow; the hidden ones leave no
// holes.
#pragma once

#include <vector>

#include <QWidget>

class QGridLayout;

namespace telvane {

class RejillaOpciones final : public QWidget {
   public:
    explicit RejillaOpciones(QWidget* padre);

    // In their order. Keeps the height that all of them need, so that hiding some moves nothing else.
    void agregar(QWidget* opcion);

   protected:
    bool eventFilter(QObject* objeto, QEvent* suceso) override;

   private:
    void recolocar();

    QGridLayout* rejilla_;
    std::vector<QWidget*> opciones_;
};

}  // namespace telvane
