// The PC's side of each exchange, written against the bare machine: what a test sends and what it got.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <numeric>
#include <vector>

#include "simulator/maquina_registrador.h"

namespace telvane {

using Bytes = std::vector<std::uint8_t>;

// Hands bytes to a machine one by one, a millisecond apart.
class Cliente {
   public:
    explicit Cliente(MaquinaRegistrador& maquina) : maquina_(maquina) {}

    Bytes enviar(std::uint8_t byte) {
        ahora_ += std::chrono::milliseconds(1);
        return maquina_.recibir(byte, ahora_);
    }
    void callar(std::chrono::nanoseconds tiempo) { ahora_ += tiempo; }
    std::chrono::nanoseconds ahora() const { return ahora_; }

    // The record of a whole read, or what came of it until an answer was not one byte.
    Bytes leerConfig() {
        Bytes registro;
        if (enviar(kApertura).size() != 1 || enviar(kLeerConfig).size() != 1) return registro;
        auto respuesta = enviar(kApertura);
        while (respuesta.size() == 1) {
            registro.push_back(respuesta.front());
            respuesta = enviar(respuesta.front());
        }
        return registro;
    }

    // How many bytes the logger sent for the whole message.
    std::size_t escribirConfig(const Bytes& mensaje) {
        std::size_t recibidos = enviar(kApertura).size() + enviar(kEscribirConfig).size();
        for (const auto byte : mensaje) recibidos += enviar(byte).size();
        return recibidos;
    }

    std::size_t escribirSerie(const std::array<std::uint8_t, 5>& bytes) {
        std::size_t recibidos = enviar(kApertura).size() + enviar(kEscribirSerie).size();
        for (const auto byte : bytes) recibidos += enviar(byte).size();
        return recibidos;
    }

    Bytes descargar() {
        Bytes imagen;
        if (enviar(kApertura) != Bytes{kApertura} || enviar(kSaludo) != Bytes{kSaludo}) return imagen;
        for (auto bloque = enviar(kApertura); bloque.size() == kBytesBloque; bloque = enviar(kApertura)) {
            imagen.insert(imagen.end(), bloque.begin(), bloque.end());
        }
        return imagen;
    }

   private:
    MaquinaRegistrador& maquina_;
    std::chrono::nanoseconds ahora_{std::chrono::hours(3)};
};

// A configuration message of 107 bytes: 100 letters, every half hour, 31 December 2024 at 23:59:58.
inline Bytes mensajeDePrueba() {
    Bytes mensaje(100);
    std::iota(mensaje.begin(), mensaje.end(), std::uint8_t{0x20});
    mensaje.insert(mensaje.end(), {0x30, 0x23, 0x59, 0x58, 0x31, 0x12, 0x24});
    return mensaje;
}

}  // namespace telvane
