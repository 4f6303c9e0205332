// One open line to the logger, read by waiting.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "cli/entorno_cli.h"
#include "link/buffer_de_entrada.h"
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
    // Of how many kinds the line has told errors since the last call.
    std::size_t erroresDeLinea() const;
    // Forgets what came and was not taken.
    void descartar();
    // The same for what still comes, until nothing has come for this long (true) or the time is over.
    bool descartarHastaCallar(Bucle::Duracion silencio, Bucle::Duracion plazo);
    // The next of them; there must be one.
    std::uint8_t tomar() { return entrada_.tomar(); }

   private:
    EntornoCli& entorno_;
    std::unique_ptr<PuertoSerie> puerto_;
    BufferDeEntrada entrada_;
};

}  // namespace telvane
