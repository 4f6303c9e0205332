// A simulated port that the PC reaches over a real TCP connection of this machine, on the clock of the test:
// the program's own network port at one end, at the other a serial device server with the simulated port
// behind it.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>

#include "link/puerto_tcp.h"
#include "platform/descriptor.h"
#include "simulator/puertos_simulados.h"
#include "tests/apoyo/bucle_prueba.h"

namespace telvane {

class PuertoEnRed final : public Puertos, public Alrededores {
   public:
    // What the server makes of its device. A failing read of it is a reset either way, and the device is
    // there for the next connection.
    enum class Trato {
        // What was said at one moment travels in one segment. A device that has gone is an end, and one more
        // for
        // each connection after it.
        junta,
        // Every byte is a segment, and the other side looks between them. When the device goes the whole
        // server
        // does: a reset, then nobody listens.
        parte
    };

    // All of them outlive this.
    PuertoEnRed(BuclePrueba& bucle, PuertosSimulados& dispositivos, int numero, Trato trato);
    PuertoEnRed(const PuertoEnRed&) = delete;
    PuertoEnRed& operator=(const PuertoEnRed&) = delete;
    ~PuertoEnRed() override;

    // By the PC; a connection that it keeps for the next opening does not count.
    bool abierto() const { return abierto_ != nullptr; }
    bool enPedazos() const { return trato_ == Trato::parte; }

    bool existe(int numero) const override { return numero == numero_; }
    std::unique_ptr<PuertoSerie> abrir(int numero, const AjustesLinea& ajustes,
                                       std::function<void()> alDespertar) override;

    bool alDia() override;

   private:
    class Abierto;
    struct Cliente;

    void escuchar(bool si);
    void aceptar();
    void abrirDispositivo();
    void conDispositivo(const std::function<void(PuertoSerie&)>& hacer);
    std::size_t porSegmento(std::size_t dichos) const;
    void leerDispositivo();
    void tomar();
    bool dar();
    void despedir();

    BuclePrueba& bucle_;
    PuertosSimulados& dispositivos_;
    int numero_;
    Trato trato_;
    DireccionTcp direccion_;
    ConexionesTcp conexiones_;
    Descriptor escucha_;
    Abierto* abierto_ = nullptr;
    bool quizasNueva_ = false;  // an opening may have made a connection that was not taken yet
    std::unique_ptr<Cliente> cliente_;
};

}  // namespace telvane
