// One serial channel, with the operations of the serial control under its own names.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "link/buffer_de_entrada.h"
#include "link/codigos_suceso.h"
#include "link/puerto_serie.h"

namespace telvane {

class MSComm;

// Which channel holds which port: the one that opened it last. Opening a port on another channel closes the
// earlier opening and discards what it held, so a stalled exchange never steals the next one's bytes.
class Tenencia {
   public:
    void tomar(int numero, MSComm& canal);
    void soltar(MSComm& canal);

   private:
    struct Parte {
        int numero;
        MSComm* canal;
    };
    std::vector<Parte> partes_;
};

// Every refused assignment, and every failed step, throws ErrorPuerto.
class MSComm {
   public:
    enum class Modo { texto, binario };

    MSComm(Puertos& puertos, Tenencia& tenencia) : puertos_(puertos), tenencia_(tenencia) {}
    MSComm(const MSComm&) = delete;
    MSComm& operator=(const MSComm&) = delete;
    ~MSComm();

    // Port number, 1 to 12; a number without a port is refused. Assigning another number closes the channel.
    // Each assignment and each opening starts with CommEvent 0.
    void CommPort(int numero);
    int CommPort() const { return commPort_; }

    void Settings(const std::string& texto);
    void Handshaking(int modo);  // 0, none, is the only one that the line has
    void InputMode(Modo modo);
    void InputLen(int bytes);  // bytes that one Input takes; 0: all that wait
    int InputLen() const { return inputLen_; }
    // Bytes waiting that raise the receive event: one each time they reach the threshold, and again after the
    // handler returned while they still do and it took some. 0: none.
    void RThreshold(int bytes);
    int RThreshold() const { return rThreshold_; }
    void SThreshold(int bytes);  // 0, no transmit event, is the only one supported
    // Sizes are 16-bit patterns read without sign: 0x8000 is 32768. 0 is refused.
    void InBufferSize(std::int16_t patron);
    std::size_t InBufferSize() const { return inBufferSize_; }
    void OutBufferSize(std::int16_t patron);
    void DTREnable(bool si);
    void RTSEnable(bool si);
    void EOFEnable(bool si);
    void Break(bool si);
    // States of the line, read only: every assignment is refused.
    [[noreturn]] void DSRHolding(bool si);
    [[noreturn]] void CTSHolding(bool si);
    [[noreturn]] void CDHolding(bool si);

    // Opening an open channel opens it again; closing a closed one does nothing.
    void PortOpen(bool abrir);
    bool PortOpen() const { return puerto_ != nullptr; }

    void Output(std::uint8_t byte);
    void Output(std::span<const std::uint8_t> bytes);
    // Takes InputLen bytes, or fewer if fewer wait. Empty when closed.
    std::vector<std::uint8_t> Input();
    // Takes one byte; 0 if none waits.
    std::uint8_t InputByte();
    // Bytes waiting, those included that the system still holds.
    std::size_t InBufferCount();
    // Discards what waits; only 0 can be assigned.
    void InBufferCount(int cero);

    // Code of the last event or error.
    int CommEvent() const { return commEvent_; }
    // The communication event: the handler reads CommEvent.
    std::function<void()> alComunicar;
    // The device has gone, or reading or writing failed: told once for each opening, with the reason.
    std::function<void(const std::string& porQue)> alFallar;
    // Whether line errors and modem-line changes raise events at once, not only with received bytes.
    void vigilarLinea(bool si);

    // Raises the event with this code, as the line would. For the port layer and for tests.
    void suceder(int codigo);

   private:
    friend class Tenencia;
    void cerrar();
    void despertar();
    void llenar();
    void pedirUmbral();
    void contarFallo(const std::string& porQue);
    [[noreturn]] static void rehusar(const std::string& que);

    Puertos& puertos_;
    Tenencia& tenencia_;
    int commPort_ = 1;
    AjustesLinea ajustes_;
    int inputLen_ = 0;
    int rThreshold_ = 0;
    std::size_t inBufferSize_ = 1024;
    bool vigilarLinea_ = false;
    int commEvent_ = suceso::kNinguno;

    std::unique_ptr<PuertoSerie> puerto_;
    bool desaparecido_ = false;
    std::string porQueDesaparecio_;  // empty: told already, or still there
    bool falloContado_ = false;
    BufferDeEntrada entrada_;
    // Told apart so that a handler that closes or reopens the channel ends the delivery to the old opening.
    std::uint64_t apertura_ = 0;
};

}  // namespace telvane
