// The communication progress dialog.
#pragma once

#include <QDialog>

#include "ui/forma_progress.h"
#include "ui/qt/vinculos.h"

namespace telvane {

// Not modal. Closing it by its frame or with Escape is a click on its button; only the form takes it off the
// screen.
class DialogoProgress final : public QDialog {
   public:
    DialogoProgress(FormaProgress& forma, Usuario usuario, QWidget* padre);

    void reject() override;

   protected:
    void keyPressEvent(QKeyEvent* suceso) override;
    void closeEvent(QCloseEvent* suceso) override;

   private:
    FormaProgress& forma_;
    Vinculos vinculos_;
    Formulario::Observacion observacion_;
};

}  // namespace telvane
