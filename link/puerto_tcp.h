// A serial port at the other end of a network, behind a serial device server that passes raw bytes.
#pragma once

#include <functional>
#include <list>
#include <memory>
#include <span>
#include <vector>

#include "link/conexion_tcp.h"
#include "link/puerto_serie.h"
#include "platform/bucle.h"

namespace telvane {

// Connections between two exchanges. An operation opens and closes its channels several times within seconds;
// a server takes one connection at a time and may still be closing the earlier one, so it is kept a moment
// for the next opening.
class ConexionesTcp {
   public:
    explicit ConexionesTcp(Bucle& bucle) : bucle_(bucle) {}

    // One that is kept for this address and still serves, without what had come on it; or a new one. Throws
    // ErrorPuerto.
    std::shared_ptr<ConexionTcp> tomar(const DireccionTcp& direccion);
    // Keeps it a moment if it still serves.
    void devolver(std::shared_ptr<ConexionTcp> conexion);

   private:
    struct Guardada {
        std::shared_ptr<ConexionTcp> conexion;
        Bucle::Asidero fin;
    };

    Bucle& bucle_;
    std::list<Guardada> guardadas_;
};

// Speed, modem lines and breaks are the server's: they are set there once, and what we ask of them is passed
// over. A connection that cannot be made, or breaks, is a device that is gone: the owner is woken, and the
// next read tells why.
class PuertoTcp final : public PuertoSerie {
   public:
    // Returns at once; the connection is made meanwhile. Throws ErrorPuerto. conexiones must outlive it.
    PuertoTcp(Bucle& bucle, ConexionesTcp& conexiones, const DireccionTcp& direccion,
              std::function<void()> alDespertar);
    PuertoTcp(const PuertoTcp&) = delete;
    PuertoTcp& operator=(const PuertoTcp&) = delete;
    ~PuertoTcp() override;

    bool listo() const override { return conexion_->decidida(); }
    void escribir(std::span<const std::uint8_t> bytes) override;
    std::size_t leer(std::span<std::uint8_t> destino) override;
    void umbral(int bytes) override;
    void vaciarEntrada() override { conexion_->vaciar(); }
    void dtr(bool) override {}
    void rts(bool) override {}
    void romper(bool) override {}
    std::vector<int> sucesosDeLinea() override { return {}; }
    void vigilarLinea(bool) override {}

   private:
    void vigilar();
    void alDecidirse();
    void alLlegar();

    Bucle& bucle_;
    ConexionesTcp& conexiones_;
    std::function<void()> alDespertar_;
    std::shared_ptr<ConexionTcp> conexion_;
    int umbral_ = 1;
    Bucle::Asidero vigilancia_;
};

}  // namespace telvane
