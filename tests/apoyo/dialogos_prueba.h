// Message boxes and file dialogs that answer by themselves: the test says what the next answer is.
#pragma once

#include <deque>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/dialogos.h"

namespace telvane {

// A box or file dialog that nobody expected fails the test, and so does an answer that nobody asked for.
class DialogosPrueba final : public Dialogos {
   public:
    using Ruta = std::optional<std::filesystem::path>;

    DialogosPrueba() = default;
    DialogosPrueba(const DialogosPrueba&) = delete;
    DialogosPrueba& operator=(const DialogosPrueba&) = delete;
    ~DialogosPrueba() override;

    // The answer of the next box that has none yet; with a text, the box must show exactly that.
    void responder(Boton boton, std::optional<std::string> texto = std::nullopt);
    // The next box stays open until contestar().
    void dejarAbierto(std::optional<std::string> texto = std::nullopt);
    // The next file dialog's choice; nullopt: cancelled.
    void responderArchivo(Ruta ruta);
    void dejarAbiertoArchivo();
    // What every box (file dialog) gets that has no answer of its own.
    void responderSiempre(Boton boton) { siempre_ = boton; }
    void responderArchivoSiempre(Ruta ruta) { archivoSiempre_ = std::move(ruta); }
    // Whether abrirDocumento finds a program.
    void elEscritorioAbre(bool si) { abre_ = si; }

    // Answers the box (file dialog) that was left open last.
    void contestar(Boton boton);
    void contestarArchivo(Ruta ruta);
    std::size_t abiertos() const { return abiertos_.size() + archivosAbiertos_.size(); }

    // Everything shown or asked for so far, oldest first.
    const std::vector<Mensaje>& mensajes() const { return mensajes_; }
    std::vector<std::string> textos() const;
    const std::vector<PeticionArchivo>& archivos() const { return archivos_; }
    const std::vector<std::filesystem::path>& documentos() const { return documentos_; }
    void olvidar();

    void mensaje(const Mensaje& mensaje, std::function<void(Boton)> listo) override;
    void archivo(const PeticionArchivo& peticion, std::function<void(Ruta)> listo) override;
    void abrirDocumento(const std::filesystem::path& ruta, std::function<void()> alFallar) override;

   private:
    struct Respuesta {
        std::optional<Boton> boton;  // none: left open
        std::optional<std::string> texto;
    };
    struct RespuestaArchivo {
        bool abierto;
        Ruta ruta;
    };

    std::deque<Respuesta> respuestas_;
    std::deque<RespuestaArchivo> respuestasArchivo_;
    std::optional<Boton> siempre_;
    std::optional<Ruta> archivoSiempre_;
    bool abre_ = true;
    std::vector<std::function<void(Boton)>> abiertos_;
    std::vector<std::function<void(Ruta)>> archivosAbiertos_;
    std::vector<Mensaje> mensajes_;
    std::vector<PeticionArchivo> archivos_;
    std::vector<std::filesystem::path> documentos_;
};

}  // namespace telvane
