// What whoever writes a table or a report gets of an archive: one state of it, however long the reading
// takes.
//
//     Lectura lectura(almacen);
//     const auto estacion = lectura.estacion("02080050");
//     lectura.recorrer(estacion, {}, Cuales::lasQueCuentan, [](const MuestraArchivada& m) { ... });
#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "historico/almacen.h"
#include "historico/llegadas.h"
#include "historico/tramo_imagen.h"

namespace telvane {

struct Periodo {
    std::optional<Instante> desde;  // included
    std::optional<Instante> hasta;  // excluded
};

enum class Cuales {
    lasQueCuentan,
    todas  // every distinct record
};

struct MuestraArchivada {
    Instante instante{};
    BytesMuestra registro{};
    // Its stamp has more than one distinct record.
    bool conflicto = false;
};
// Of a stretch that an image tells.
inline MuestraArchivada unica(BytesMuestraConst registro) {
    return {.instante = instanteDe(registro), .registro = copiaDe(registro)};
}

class Lectura {
   public:
    explicit Lectura(Almacen& almacen) : almacen_(almacen), transaccion_(almacen, Almacen::Modo::lectura) {}

    // By name.
    std::vector<EstacionGuardada> estaciones() { return almacen_.estaciones(); }
    // Throws ErrorImagen where there is no such station.
    EstacionGuardada estacion(const std::string& nombre);
    // By clock and fingerprint, the newest last.
    std::vector<FichaImagen> imagenes(const EstacionGuardada& estacion) {
        return almacen_.fichas(estacion.id);
    }
    // How they came from their logger, of those of which that is known; in no order.
    Almacen::Descargas descargas(const EstacionGuardada& estacion) { return almacen_.descargas(estacion.id); }
    // An image byte for byte, from whichever station's it can be read: somebody may have moved what is kept
    // of it. There is a station. Throws ErrorImagen when that is damaged, or nothing is kept.
    std::vector<std::uint8_t> bytesDe(const Huella& huella);
    // The 432 bytes at the head of the newest image, zeros where it is shorter; the station's serial number
    // stands over an erased one. What leerCabecera and the exports take.
    static std::vector<std::uint8_t> cabecera(const EstacionGuardada& estacion);

    // Of every station the last images as they left their loggers, the newest last.
    std::map<IdEstacion, Llegadas> ultimas();
    // Gaps at the stamps that the image brought after a moment, or at all of its stamps. intervalo: how close
    // they stand, as a rule. imagen: one with samples.
    std::int64_t huecosDesde(const EstacionGuardada& estacion, const std::optional<Instante>& desde,
                             const FichaImagen& imagen, std::chrono::minutes intervalo);
    // Stamps in conflict at which the image, which has samples, holds a record that the other one does not
    // hold; nullptr: all of its stamps in conflict.
    std::int64_t conflictosDeMas(const EstacionGuardada& estacion, const FichaImagen& imagen,
                                 const FichaImagen* otra);

    // In order of stamp, those of one stamp by their bytes.
    using AlLeerMuestra = std::function<void(const MuestraArchivada&)>;
    void recorrer(const EstacionGuardada& estacion, const Periodo& periodo, Cuales cuales,
                  const AlLeerMuestra& alLeer);
    // The same for whoever takes many at once, told by an image: all of them without a conflict.
    using AlLeerTramo = std::function<void(const TramoImagen&)>;
    void recorrer(const EstacionGuardada& estacion, const Periodo& periodo, Cuales cuales,
                  const AlLeerMuestra& alLeer, const AlLeerTramo& alLeerTramo);

   private:
    Almacen& almacen_;
    Transaccion transaccion_;
};

}  // namespace telvane
