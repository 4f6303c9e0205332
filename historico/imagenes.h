// A station's images, unpacked.
#pragma once

#include <cstdint>
#include <list>
#include <memory>
#include <vector>

#include "historico/almacen.h"
#include "historico/compresion.h"

namespace telvane {

// An image that is not taken, or not there, or damaged; the text says why and what to do.
class ErrorImagen : public std::runtime_error {
   public:
    explicit ErrorImagen(const std::string& que) : std::runtime_error(sinControles(que)) {}
};

// Keeps a few of them: an image is packed against one that was looked at just before, as a rule.
class Imagenes {
   public:
    Imagenes(Almacen& almacen, IdEstacion estacion) : almacen_(almacen), estacion_(estacion) {}

    // Byte for byte; valid until the next call. Throws ErrorImagen when it is not there, or damaged.
    const std::vector<std::uint8_t>& bytes(const Huella& huella);
    // The same; nullptr instead of ErrorImagen. What is new can be taken in beside a damaged image.
    const std::vector<std::uint8_t>* siSeLee(const Huella& huella);
    // The same, for whoever keeps it.
    std::shared_ptr<const std::vector<std::uint8_t>> compartida(const Huella& huella);
    // How many images the one that was read last is packed upon.
    int profundidad() const { return abiertas_.front().profundidad; }

   private:
    struct Abierta {
        Huella huella;
        std::shared_ptr<std::vector<std::uint8_t>> bytes;
        int profundidad = 0;
        bool comprobada = false;  // known to be what its fingerprint says
        bool compartida = false;
    };
    const Abierta* buscar(const Huella& huella);
    const Abierta& recordar(Abierta abierta);

    Almacen& almacen_;
    IdEstacion estacion_;
    std::list<Abierta> abiertas_;  // the last one used first
    std::shared_ptr<std::vector<std::uint8_t>> libre_;
    Descompresor descompresor_;
};

// Images of which another depth is kept than that of their chain, with the one that it is. Those whose chain
// comes to no end have none.
std::vector<Almacen::Eslabon> profundidadesPorCorregir(Almacen& almacen, IdEstacion estacion);

}  // namespace telvane
