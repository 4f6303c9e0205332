// A logger at the far end of a wire: when each byte arrives, in both directions, and what the wire does to
// it. Driven by the time that the caller hands in; no clock and no alarm of its own.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <utility>

#include "simulator/fallo.h"
#include "simulator/maquina_registrador.h"

namespace telvane {

enum class QueLlega : std::uint8_t { byte, suceso, errorLectura, colgado };

class LineaSimulada {
   public:
    using Momento = std::chrono::nanoseconds;

    // Something that reaches the PC.
    struct Llegada {
        QueLlega que;
        int valor;  // the byte, or the line event's code
        Momento cuando;
    };

    // A PC that writes without listening loses what goes beyond this many bytes on the way, and the logger
    // does not hear it while as many of its own are still on theirs: no exchange comes near.
    static constexpr std::size_t kEnCaminoMaximo = 4096;

    // baudios 0: nothing takes time; an answer arrives right after its request, never in the same instant.
    LineaSimulada(MaquinaRegistrador maquina, int baudios);

    // Every byte that the logger sends passes here from now on; an empty function lets them pass.
    void manipular(Manipulador manipulador);

    // Sees every byte that is put on its way to the PC, after the tampering.
    void anotar(std::function<void(std::uint8_t)> anotador) { anotador_ = std::move(anotador); }

    // The PC puts a byte on the wire. Times never go back, here and in alDia().
    void enviar(std::uint8_t byte, Momento ahora);
    // Brings the logger up to this moment.
    void alDia(Momento ahora);
    // When the next byte reaches the logger.
    std::optional<Momento> proximaRecepcion() const;

    // What is on its way to the PC or has reached it (cuando <= now), in order of time. The owner takes from
    // here.
    std::deque<Llegada>& llegadas() { return llegadas_; }
    const std::deque<Llegada>& llegadas() const { return llegadas_; }

    // Puts something on the way to the PC that no request asked for.
    void emitir(std::uint8_t byte, Momento ahora);
    void suceder(int codigo, Momento ahora);
    void colgar(Momento ahora);
    // Whether the device disappears, now or with what is on its way.
    bool colgada() const { return colgada_; }
    // The wire is whole again; nothing is on its way.
    void reponer();
    // True once after a byte whose effect was a failing write.
    bool tomarErrorEscritura();
    // True once after a byte whose effect was a write cut short.
    bool tomarEscrituraCorta();

    MaquinaRegistrador& maquina() { return maquina_; }
    const MaquinaRegistrador& maquina() const { return maquina_; }

   private:
    struct EnCamino {
        std::uint8_t byte;
        Momento cuando;
    };
    void recibir(const EnCamino& enCamino);
    void contarCuadro(Momento ahora);
    void salir(std::uint8_t byte, Momento desde);
    void llegar(QueLlega que, int valor, Momento cuando);
    Momento finDeByte(Momento desde) const;

    MaquinaRegistrador maquina_;
    Momento porByte_;
    Momento demoraMinima_;  // between a request and the start of its answer
    Manipulador manipulador_;
    std::function<void(std::uint8_t)> anotador_;
    std::deque<EnCamino> haciaRegistrador_;
    std::deque<Llegada> llegadas_;
    Momento libreHaciaRegistrador_{0};
    Momento libreHaciaPc_{0};
    Intercambio intercambio_ = Intercambio::reposo;
    std::size_t indice_ = 0;
    std::size_t cuadro_ = 0;
    bool huboMarco_ = false;
    std::size_t numero_ = 0;
    bool callada_ = false;
    bool cortada_ = false;
    bool colgada_ = false;
    bool errorEscritura_ = false;
    bool escrituraCorta_ = false;
};

}  // namespace telvane
