// The window program inside a bench, worked by designer names: the real dialogs come up and are answered at
// once.
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include <QObject>

namespace telvane::bench {

class VentanaViva final : public QObject {
   public:
    using Guion = std::function<void(VentanaViva&)>;

    // Starts the program with this device as COM1, plays the script once the window is up, and ends. Files go
    // into carpeta, settings included. Exit status; 1 with the reason on standard error when the script
    // throws.
    static int correr(const std::string& com, const std::filesystem::path& carpeta, const Guion& guion);

    // Start-up, through the configuration read.
    void conectar();
    void pulsar(const char* nombre) const;
    // Both throw std::runtime_error when the time passes first.
    void esperarHabilitado(const char* nombre, std::chrono::seconds plazo);
    void esperar(const std::function<bool()>& condicion, std::chrono::seconds plazo);
    static void dejarCorrer(std::chrono::milliseconds tiempo);

    // Message boxes shown so far whose text begins so.
    int cajas(const std::string& comienzo) const;
    // Wake-ups for bytes that came through a descriptor, since the start.
    std::size_t lecturas() const { return lecturas_; }

   protected:
    bool eventFilter(QObject* objeto, QEvent* suceso) override;

   private:
    void mirar();
    explicit VentanaViva(std::filesystem::path guardarEn) : guardarEn_(std::move(guardarEn)) {}

    std::filesystem::path guardarEn_;
    std::size_t lecturas_ = 0;
    std::vector<std::string> cajas_;
    std::function<void()> alSuceder_;
};

}  // namespace telvane::bench
