// A button with air around its caption, which breaks into lines where the screen is narrower than it.
#pragma once

#include <QPushButton>

namespace telvane {

class BotonHolgado final : public QPushButton {
   public:
    explicit BotonHolgado(QWidget* padre);

    QSize sizeHint() const override;
    // Never wider than what a window on its screen has room for.
    QSize minimumSizeHint() const override;

   protected:
    // A key that is held presses once.
    void keyPressEvent(QKeyEvent* suceso) override;
    void resizeEvent(QResizeEvent* suceso) override;
    void paintEvent(QPaintEvent* suceso) override;

   private:
    bool partido() const { return width() < anchoEntero(); }
    int anchoEntero() const;
    QRect lugarDelTexto() const;
};

}  // namespace telvane
