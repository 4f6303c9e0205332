// A simulated logger at work on a pty, at the line's own pace.
#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/reloj.h"
#include "simulator/linea_simulada.h"
#include "simulator/memoria_guardada.h"
#include "simulator/terminal_simulado.h"

namespace telvane {

class ProgramaSimulador {
   public:
    using Decir = std::function<void(const std::string&)>;

    // memoria: where the image goes, now if there is no file yet, and each time that the logger's memory
    // changed; none: nowhere. decir: told what went wrong while serving goes on. Throws std::runtime_error
    // with the reason in Spanish, and leaves nothing then.
    ProgramaSimulador(LineaSimulada linea, std::filesystem::path enlace,
                      std::optional<MemoriaGuardada> memoria, Decir decir);

    const std::string& dispositivo() const { return terminal_.nombre(); }
    // Serves the line until the descriptor senales can be read. False: the memory is not saved then, which
    // was told.
    bool servir(int senales);

   private:
    using Momento = LineaSimulada::Momento;

    void escuchar();
    void entregar();
    void guardarSiCambio();
    void guardar();
    std::optional<Momento> proximo() const;

    RelojSistema reloj_;
    LineaSimulada linea_;
    TerminalSimulado terminal_;
    std::optional<MemoriaGuardada> memoria_;
    Decir decir_;
    std::size_t guardados_ = 0;
    std::string porQueNo_;           // the memory is not saved; each reason is told once
    std::optional<Momento> vuelve_;  // when a hung-up device is there again
    Momento ultimaLlegada_{0};       // when the last byte was due at the PC ...
    Momento atraso_{0};              // ... and how late it left
};

}  // namespace telvane
