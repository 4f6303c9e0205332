// A serial device server for tests, as the boxes that people buy: takes one connection at a time, passes raw
// bytes between it and a device, and closes it when the device is gone. And a network with a way to go in
// between.
#pragma once

#include <atomic>
#include <chrono>
#include <filesystem>
#include <string>
#include <thread>

#include "platform/descriptor.h"

namespace telvane {

class ServidorSerie {
   public:
    enum class Familia { ipv4, ipv6 };
    struct Red {
        Familia familia = Familia::ipv4;
        // Each way, for every byte.
        std::chrono::milliseconds demora{0};
    };
    // Serves until it is destroyed. Throws std::system_error, with EADDRNOTAVAIL or EAFNOSUPPORT where this
    // machine has no such address.
    explicit ServidorSerie(std::filesystem::path dispositivo)
        : ServidorSerie(std::move(dispositivo), Red{}) {}
    ServidorSerie(std::filesystem::path dispositivo, Red red);
    ServidorSerie(const ServidorSerie&) = delete;
    ServidorSerie& operator=(const ServidorSerie&) = delete;
    ~ServidorSerie();

    // "tcp://127.0.0.1:40123"
    const std::string& direccion() const { return direccion_; }
    // Connections that were taken so far.
    int conexiones() const { return conexiones_; }

   private:
    void servir();
    void pasar(int cliente, int dispositivo) const;

    std::filesystem::path dispositivo_;
    Red red_;
    Descriptor escucha_;
    Descriptor fin_;  // readable: it is over
    std::string direccion_;
    std::atomic<int> conexiones_ = 0;
    std::thread hilo_;
};

}  // namespace telvane
