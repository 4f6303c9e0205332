// How one image changes what follows from the images of its station.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "historico/almacen.h"
#include "historico/imagenes.h"

namespace telvane {

// The image being taken, read once.
struct ImagenNueva {
    ImagenNueva(BytesImagen contenido, const Huella& huella, Incorporada cuando, std::string_view origen);

    Instante instante(std::size_t ranura) const { return instanteDe(enRanura(bytes, ranura)); }

    BytesImagen bytes;
    std::vector<std::uint16_t> ranuras;  // of its distinct samples, in order of stamp
    FichaImagen ficha;
};

struct Asimilada {
    std::int64_t nuevas = 0;
    std::int64_t conflictos = 0;  // its stamps that are in conflict now
};

// Takes the samples of images in, one image after the other; the images themselves are kept elsewhere.
class Asimilacion {
   public:
    // anteriores: the images that were taken before this one; asked for where an old one is needed.
    using Anteriores = std::function<std::vector<FichaImagen>()>;
    Asimilacion(Almacen& almacen, IdEstacion estacion, ResumenEstacion& resumen, Imagenes& imagenes,
                Anteriores anteriores)
        : almacen_(almacen),
          estacion_(estacion),
          resumen_(resumen),
          imagenes_(imagenes),
          anteriores_(std::move(anteriores)) {}

    // Leaves the summary true, but for what it says of the images themselves.
    Asimilada asimilar(const ImagenNueva& imagen);

   private:
    // What of the candidates is not there yet, and the stamps that this brings into conflict.
    struct Hallazgo {
        std::vector<Fila> nuevas;
        std::vector<Instante> enConflicto;   // stamps with more than one record, seen on the way
        std::vector<Instante> sellosNuevos;  // that had no record before
    };
    Hallazgo buscarNuevas(const std::vector<Fila>& candidatas);
    void buscarEnTramo(std::span<const Fila> candidatas, Hallazgo& hallazgo);
    std::int64_t contarHuecosDeMas(const std::vector<Instante>& sellosNuevos);
    std::vector<Instante> sellosConTestigos(const ImagenNueva& imagen);
    void atestiguar(const ImagenNueva& imagen, const std::vector<Instante>& sellos);
    void atestiguarAnteriores(const std::vector<Instante>& sellos);
    std::vector<Instante> revisarParciales(const ImagenNueva& imagen);
    void contar(const std::vector<Instante>& sellos);

    Almacen& almacen_;
    IdEstacion estacion_;
    ResumenEstacion& resumen_;
    Imagenes& imagenes_;
    Anteriores anteriores_;
};

}  // namespace telvane
