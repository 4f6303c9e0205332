// A station's rows told by its images: decoding an image takes a tenth of what reading as many rows takes.
#pragma once

#include "historico/almacen.h"
#include "historico/tramo_imagen.h"

namespace telvane {

struct AlRecorrer {
    std::function<void(const TramoImagen&)> tramo;
    Almacen::AlLeerFila fila;  // others may have its stamp
};
// The same rows in the same order as Almacen::filas, each told to one of the two. An image tells those of a
// stretch of time only where it holds every one of them, each of a stamp of its own; the rest is read row by
// row, whatever the images are like.
void recorrerFilas(Almacen& almacen, const EstacionGuardada& estacion, Instante desde, Instante hasta,
                   const AlRecorrer& alRecorrer);

// Whether they are told quicker so than row by row, which few rows are. How many lie between the two moments
// is guessed from how many the station has.
bool convienenImagenes(const EstacionGuardada& estacion, Instante desde, Instante hasta);

}  // namespace telvane
