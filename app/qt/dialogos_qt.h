// Message boxes, file dialogs and "open this file" of the desktop.
#pragma once

#include <memory>

#include "app/qt/clases_de_archivo.h"
#include "platform/bucle.h"
#include "platform/dialogos.h"

class QMessageBox;
class QWidget;

namespace telvane {

class VentanaInicio;

// A message box of ours, not yet shown: plain text, our own button texts, deleted when it closes.
QMessageBox* nuevaCaja(const Mensaje& mensaje, QWidget* padre);

// Answers arrive through the loop. Nothing here waits: a box stands modal on the screen while the loop turns.
class DialogosQt final : public Dialogos {
   public:
    explicit DialogosQt(Bucle& bucle) : bucle_(bucle) {}

    // The window in front of which everything appears, once there is one; it outlives the boxes.
    void ventana(VentanaInicio* ventana) { ventana_ = ventana; }

    void mensaje(const Mensaje& mensaje, std::function<void(Boton)> listo) override;
    void archivo(const PeticionArchivo& peticion,
                 std::function<void(std::optional<std::filesystem::path>)> listo) override;
    bool abrirDocumento(const std::filesystem::path& ruta) override;

   private:
    QWidget* padre() const;
    void mostrarMensaje(const Mensaje& mensaje, std::function<void(Boton)> listo);

    Bucle& bucle_;
    VentanaInicio* ventana_ = nullptr;
    // Made for the first file dialog; outlives them all, and their threads.
    std::unique_ptr<ClasesDeArchivo> clases_;
};

}  // namespace telvane
