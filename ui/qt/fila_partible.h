// A row that becomes a column where it does not fit.
#pragma once

#include <QWidget>

class QBoxLayout;

namespace telvane {

class FilaPartible final : public QWidget {
   public:
    explicit FilaPartible(QWidget* padre);

    // Widgets and stretches, in the order of the eye.
    QBoxLayout& fila() const { return *fila_; }

    // As narrow as its widest widget.
    QSize minimumSizeHint() const override;

   protected:
    bool event(QEvent* suceso) override;
    void resizeEvent(QResizeEvent* suceso) override;

   private:
    void disponer();
    int anchoAlLado() const;

    QBoxLayout* fila_;
};

}  // namespace telvane
