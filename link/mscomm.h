// One serial channel, with the operations of the serial control under its own names.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "link/puerto_serie.h"

namespace telvane {

class MSComm;

// CommEvent codes.
namespace suceso {
inline constexpr int kNinguno = 0;
inline constexpr int kEnviado = 1;
inline constexpr int kRecibido = 2;
inline constexpr int kCts = 3;
inline constexpr int kDsr = 4;
inline constexpr int kCd = 5;
inline constexpr int kTimbre = 6;
inline constexpr int kFinArchivo = 7;
inline constexpr int kParada = 1001;
inline constexpr int kEsperaCts = 1002;
inline constexpr int kEsperaDsr = 1003;
inline constexpr int kMarco = 1004;
inline constexpr int kSobrecarga = 1006;
inline constexpr int kEsperaCd = 1007;
inline constexpr int kDesbordamiento = 1008;
inline constexpr int kParidad = 1009;
inline constexpr int kEnvioLleno = 1010;
inline constexpr int kDcb = 1011;
}  // namespace suceso

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

    // Port number, 1 to 16; a number without a port is refused. Assigning another number closes the channel.
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
    bool desbordado_ = false;
    // What came and was not taken yet: entrada_[leidos_..].
    std::vector<std::uint8_t> entrada_;
    std::size_t leidos_ = 0;
    // Told apart so that a handler that closes or reopens the channel ends the delivery to the old opening.
    std::uint64_t apertura_ = 0;
};

}  // namespace telvane
