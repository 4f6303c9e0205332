// A serial port, as the channels see it: behind it stands a real line, an in-process logger, or a failing
// one.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace telvane {

// Why a step on a port was refused, told apart by what the user can do about it.
enum class MotivoPuerto {
    noExiste,  // no such number, or its device is gone
    sinPermiso,
    ocupado,
    noEsTerminal,
    noSeAbre,       // the system lacks what opening takes: descriptors, memory
    desaparecido,   // the device hung up while open
    lineaInvalida,  // settings or value refused
    cerrado,        // the channel is not open
    otro
};

class ErrorPuerto : public std::runtime_error {
   public:
    // que: Spanish, for the user.
    ErrorPuerto(MotivoPuerto motivo, const std::string& que) : std::runtime_error(que), motivo_(motivo) {}
    MotivoPuerto motivo() const { return motivo_; }

   private:
    MotivoPuerto motivo_;
};

// "baud,parity,data bits,stop bits", e.g. "19200,n,8,1".
struct AjustesLinea {
    int baudios = 9600;
    char paridad = 'n';  // n, e, o, m, s
    int bitsDatos = 8;   // 5 to 8
    int bitsParada = 1;  // 1, 2
    bool dtr = false;
    bool rts = false;

    // Throws ErrorPuerto (lineaInvalida).
    static AjustesLinea leer(const std::string& texto);
};

// How long a port may take nothing more before a write is given up.
inline constexpr std::chrono::seconds kPlazoEscritura{1};

// One open port; destroying it closes it and discards what it held. Not a thing of threads.
class PuertoSerie {
   public:
    virtual ~PuertoSerie() = default;

    // False while it is still being connected: what is written leaves later. alDespertar is called when that
    // has ended.
    virtual bool listo() const { return true; }
    // Sends every byte or throws ErrorPuerto.
    virtual void escribir(std::span<const std::uint8_t> bytes) = 0;
    // Takes what waits, up to the span's size, without waiting; 0: nothing waits.
    // Throws ErrorPuerto (desaparecido) once the device has gone, every time it is asked.
    virtual std::size_t leer(std::span<std::uint8_t> destino) = 0;
    // Wake the owner once this many bytes (1 to kUmbralMaximo) wait, not for every byte.
    static constexpr int kUmbralMaximo = 255;  // the system keeps it in one byte
    virtual void umbral(int bytes) = 0;
    // Discards what waits.
    virtual void vaciarEntrada() = 0;
    virtual void dtr(bool alto) = 0;
    virtual void rts(bool alto) = 0;
    virtual void romper(bool encendido) = 0;
    // Codes (link/codigos_suceso.h) of the line errors and modem-line changes since the last call, oldest
    // first.
    virtual std::vector<int> sucesosDeLinea() = 0;
    // Asks to be woken for those as well; a port that cannot tell them ignores it.
    virtual void vigilarLinea(bool si) = 0;
};

// Where ports come from. The numbers are those of the user: COM1 is 1.
class Puertos {
   public:
    virtual ~Puertos() = default;
    virtual bool existe(int numero) const = 0;
    // alDespertar is called from the loop when bytes wait, the line has news, or the device has gone.
    // Throws ErrorPuerto.
    virtual std::unique_ptr<PuertoSerie> abrir(int numero, const AjustesLinea& ajustes,
                                               std::function<void()> alDespertar) = 0;
};

}  // namespace telvane
