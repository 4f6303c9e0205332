// A station's images, unpacked.
#pragma once

#include <cstdint>
#include <list>
#include <memory>
#include <vector>

#include "historico/almacen.h"
#include "historico/compresion.h"
#include "historico/reserva_bytes.h"

namespace telvane {

// An image that is not taken, or not there, or damaged; the text says why and what to do.
class ErrorImagen : public std::runtime_error {
   public:
    explicit ErrorImagen(const std::string& que) : std::runtime_error(sinControles(que)) {}
};

// What is kept of it is not what its SHA-256 says.
class ImagenDanada : public ErrorImagen {
   public:
    // The motive where nothing of its own is kept.
    static constexpr std::string_view kSinContenido = "falta su contenido";
    ImagenDanada(const Huella& huella, const std::string& motivo);
    const std::string& motivo() const { return motivo_; }

   private:
    std::string motivo_;
};

// Keeps a few of them: an image is packed against one that was looked at just before, as a rule.
class Imagenes {
   public:
    Imagenes(Almacen& almacen, IdEstacion estacion) : almacen_(almacen), estacion_(estacion) {}

    // Byte for byte; valid until the next call. Throws ImagenDanada, also where it is not there.
    const std::vector<std::uint8_t>& bytes(const Huella& huella);
    // The same; nullptr instead of ErrorImagen. What is new can be taken in beside a damaged image.
    const std::vector<std::uint8_t>* siSeLee(const Huella& huella);
    // The same, for whoever keeps it. An image whose packing has a checksum is not compared with its
    // fingerprint: damage is noticed either way, and at a tenth of the time; that it is this image, and not
    // another whole one, is the caller's to see.
    std::shared_ptr<const std::vector<std::uint8_t>> compartida(const Huella& huella);
    // How many images the one that was read last is packed upon.
    int profundidad() const { return abiertas_.front().profundidad; }

   private:
    struct Abierta {
        Huella huella;
        std::shared_ptr<std::vector<std::uint8_t>> bytes;
        int profundidad = 0;
        bool conSuma = false;     // its checksum was compared
        bool comprobada = false;  // known to be what its fingerprint says

        // Throws ImagenDanada.
        void comprobar();
    };
    Abierta& abrir(const Huella& huella);
    Abierta* buscar(const Huella& huella);
    Abierta& recordar(Abierta abierta);

    Almacen& almacen_;
    IdEstacion estacion_;
    std::list<Abierta> abiertas_;  // the last one used first
    ReservaBytes reserva_;
    Descompresor descompresor_;
};

}  // namespace telvane
