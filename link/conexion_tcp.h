// A connection to a serial device server, from the moment in which it is asked for.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <span>

#include "link/direccion_tcp.h"
#include "link/puerto_serie.h"

namespace telvane {

// Finding the name and connecting happen in a thread of its own, because the system offers the first only to
// those who wait; so the caller's loop never stands still. What is written meanwhile leaves as soon as the
// connection is there. Bytes go out at once (no Nagle), and a peer that fell silent for good is found by
// keepalive.
class ConexionTcp {
   public:
    // For all addresses of the name together.
    static constexpr std::chrono::seconds kPlazo{5};

    // Throws ErrorPuerto when the system gives no thread or descriptor.
    explicit ConexionTcp(const DireccionTcp& direccion);
    ConexionTcp(const ConexionTcp&) = delete;
    ConexionTcp& operator=(const ConexionTcp&) = delete;
    ~ConexionTcp();

    // Whether the attempt has ended, well or badly.
    bool decidida() const;
    // Readable once it has ended. As long as this lives.
    int aviso() const;
    // Whether an owner has heard of that end; the first one that did says so.
    bool anunciada() const { return anunciada_; }
    void anunciar() { anunciada_ = true; }
    // The socket; -1 while there is none.
    int socket() const;
    // Throws ErrorPuerto with the reason once the attempt has failed.
    void exigir() const;
    // Sends every byte or keeps it for when the connection is there. Waits up to a second for room. Throws
    // ErrorPuerto.
    void escribir(std::span<const std::uint8_t> bytes);
    // Takes what waits; 0: nothing. Throws ErrorPuerto (desaparecido) once the peer has gone.
    std::size_t leer(std::span<std::uint8_t> destino);
    // Discards what waits, and what was to be written once there is a connection.
    void vaciar();
    // Whether a later exchange may use it: connected, and the peer still there.
    bool sirve();
    // Bytes from which the descriptor counts as readable, 1 or more.
    void umbral(int bytes);

    const DireccionTcp& direccion() const { return direccion_; }

   private:
    struct Intento;
    [[noreturn]] void desaparecio() const;

    DireccionTcp direccion_;
    // Shared with the thread, which may outlive this: nobody can call off the search for a name.
    std::shared_ptr<Intento> intento_;
    int umbral_ = 1;
    bool anunciada_ = false;
};

}  // namespace telvane
