// Message boxes, file dialogs and "open this file" of the desktop.
#pragma once

#include <utility>

#include "app/qt/abridor.h"
#include "app/qt/teclas_ajenas.h"
#include "platform/bucle.h"
#include "platform/dialogos.h"

class QDialog;
class QMessageBox;
class QWidget;

namespace telvane {

class VentanaInicio;

// A message box of ours, not yet shown: plain text, our own button texts, deleted when it closes.
QMessageBox* nuevaCaja(const Mensaje& mensaje, QWidget* padre);

// Answers arrive through the loop. Nothing here waits: a box stands modal on the screen while the loop turns.
class DialogosQt final : public Dialogos {
   public:
    DialogosQt(Bucle& bucle, const Reloj& reloj) : bucle_(bucle), abridor_(bucle, reloj) {}

    // The window in front of which everything appears, once there is one; it outlives the boxes.
    // enCurso: the window of what is going on, if any; the keyboard goes back there.
    void ventana(VentanaInicio* ventana, std::function<QWidget*()> enCurso = {}) {
        ventana_ = ventana;
        enCurso_ = std::move(enCurso);
    }

    void mensaje(const Mensaje& mensaje, std::function<void(Boton)> listo) override;
    void archivo(const PeticionArchivo& peticion,
                 std::function<void(std::optional<std::filesystem::path>)> listo) override;
    void abrirDocumento(const std::filesystem::path& ruta, std::function<void()> alFallar) override;

   private:
    QWidget* padre() const;
    void presentar(QDialog& dialogo);
    void devolverTeclado(QWidget* anterior) const;
    void mostrarMensaje(const Mensaje& mensaje, std::function<void(Boton)> listo);

    Bucle& bucle_;
    Abridor abridor_;
    TeclasAjenas teclas_;
    VentanaInicio* ventana_ = nullptr;
    std::function<QWidget*()> enCurso_;
};

}  // namespace telvane
