// One-line field: shows that it is locked, hands its keys to a filter first, tells when the focus has left
// it.
#pragma once

#include <functional>

#include <QLineEdit>

namespace telvane {

class CampoLinea final : public QLineEdit {
   public:
    explicit CampoLinea(QWidget* padre);

    // Character code of a key (ui/teclas.h); 0 back: swallowed. Shortcuts and movements do not pass through
    // it.
    void filtroDeTeclas(std::function<int(int)> filtro) { filtro_ = std::move(filtro); }
    // The focus went to another control of the program; changing windows is not leaving.
    void alSalir(std::function<void()> accion) { alSalir_ = std::move(accion); }
    // Read only, and visibly so; the keyboard still reaches it.
    void bloquear(bool si);
    // Wide enough for this many characters of ordinary text; 0: the toolkit's own hint.
    void anchoEnCaracteres(int caracteres);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

   protected:
    void keyPressEvent(QKeyEvent* suceso) override;
    void focusInEvent(QFocusEvent* suceso) override;
    void focusOutEvent(QFocusEvent* suceso) override;
    void changeEvent(QEvent* suceso) override;

   private:
    void colorear();

    std::function<int(int)> filtro_;
    std::function<void()> alSalir_;
    int caracteres_ = 0;
    bool coloreando_ = false;
};

}  // namespace telvane
