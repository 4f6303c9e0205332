// A simulated logger at work on a pty, at the line's own pace.
#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <vector>

#include "platform/reloj.h"
#include "simulator/linea_simulada.h"
#include "simulator/terminal_simulado.h"

namespace telvane {

class ProgramaSimulador {
   public:
    // memoria: where the image goes each time that the logger's memory changed; none: nowhere.
    ProgramaSimulador(LineaSimulada linea, std::filesystem::path enlace,
                      std::optional<std::filesystem::path> memoria);

    const std::string& dispositivo() const { return terminal_.nombre(); }
    // Serves the line until the descriptor senales can be read.
    void servir(int senales);

   private:
    using Momento = LineaSimulada::Momento;

    void escuchar();
    void entregar();
    void guardar();
    std::optional<Momento> proximo() const;

    RelojSistema reloj_;
    LineaSimulada linea_;
    TerminalSimulado terminal_;
    std::optional<std::filesystem::path> memoria_;
    std::size_t guardados_ = 0;
    std::optional<Momento> vuelve_;  // when a hung-up device is there again
    Momento ultimaLlegada_{0};       // when the last byte was due at the PC ...
    Momento atraso_{0};              // ... and how late it left
};

}  // namespace telvane
