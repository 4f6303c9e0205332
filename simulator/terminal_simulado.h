// The pty under which a simulated logger is reached, and the link that names it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

#include "platform/descriptor.h"

namespace telvane {

// Keeps the far end open itself, so that a program that closes it does not hang the pty up. What nobody read
// stays in the pty for the next one who opens it, as in the system's own port drivers.
class TerminalSimulado {
   public:
    // Opens the pty and links enlace to it. A link that points nowhere, or to a pty that no
    // simulator serves, is replaced; anything else that has that name is left alone. Throws
    // std::runtime_error with the reason in Spanish.
    explicit TerminalSimulado(std::filesystem::path enlace);
    TerminalSimulado(const TerminalSimulado&) = delete;
    TerminalSimulado& operator=(const TerminalSimulado&) = delete;
    // Removes the link.
    ~TerminalSimulado();

    // "/dev/pts/N"
    const std::string& nombre() const { return nombre_; }
    // To be polled for reading; -1 while hung up.
    int descriptor() const { return maestro_(); }

    // What waits, without waiting for more.
    std::vector<std::uint8_t> leer() const;
    // What the pty has no room for is lost, as in a receiver that nobody empties.
    void escribir(std::span<const std::uint8_t> bytes) const;

    // Hangs up and removes the link, as a pulled adapter does; reabrir() puts a new pty in its place.
    void colgar();
    void reabrir();

   private:
    void abrirPty();
    void enlazar();

    std::filesystem::path enlace_;
    Descriptor reserva_;
    std::string nombre_;
    Descriptor maestro_;
    Descriptor esclavo_;
};

}  // namespace telvane
