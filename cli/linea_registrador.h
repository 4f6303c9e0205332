// One open line to the logger, read by waiting.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "cli/entorno_cli.h"
#include "link/puerto_serie.h"

namespace telvane {

class LineaRegistrador {
   public:
    // Opens the port with the logger's settings. Throws ErrorPuerto.
    LineaRegistrador(EntornoCli& entorno, Puertos& puertos, int numero);
    LineaRegistrador(const LineaRegistrador&) = delete;
    LineaRegistrador& operator=(const LineaRegistrador&) = delete;

    void enviar(std::uint8_t byte);
    // Waits until this many bytes, 1 to 255, are here; false: the time was over first. Throws ErrorPuerto
    // when the device has gone, ErrorCli (interrumpido) on a signal.
    bool esperarBytes(std::size_t cuantos, Bucle::Duracion plazo);
    // Lets the time pass; what comes meanwhile is nobody's. Throws ErrorCli (interrumpido).
    void pausar(Bucle::Duracion duracion);
    // Bytes that are here by now.
    std::size_t esperan();
    // The next of them; there must be one.
    std::uint8_t tomar() { return entrada_[leidos_++]; }

   private:
    void llenar();
    std::size_t quedan() const { return entrada_.size() - leidos_; }

    EntornoCli& entorno_;
    std::unique_ptr<PuertoSerie> puerto_;
    // What came and was not taken yet: entrada_[leidos_..].
    std::vector<std::uint8_t> entrada_;
    std::size_t leidos_ = 0;
};

}  // namespace telvane
