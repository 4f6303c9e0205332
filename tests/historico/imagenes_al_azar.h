// Images by chance for RapidCheck, and a way to take them in that no other one stands in.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <rapidcheck.h>

#include "historico/almacen_sqlite.h"
#include "historico/archivo.h"
#include "tests/historico/imagen_prueba.h"

namespace telvane {

// An image of the station with what happens to images: parts of the series, spoilt bytes, a clock set back,
// an erased memory, broken-off downloads.
inline rc::Gen<std::vector<std::uint8_t>> unaDeLaEstacion() {
    return rc::gen::exec([] {
        const int desde = *rc::gen::inRange(0, 30);
        const int cuantos = *rc::gen::inRange(0, 40);
        const int paso = *rc::gen::element(10, 10, 10, 1, 60);
        const auto ranura =
            static_cast<std::size_t>(*rc::gen::inRange(0, 2) == 0 ? desde : *rc::gen::inRange(0, 40));
        ImagenPrueba imagen;
        imagen.reloj(kInicio + std::chrono::minutes(*rc::gen::inRange(0, 5)));
        imagen.serie(ranura, desde * paso, cuantos, paso);
        const int cambios = *rc::gen::inRange(0, 4);
        for (int i = 0; i < cambios; ++i) {
            imagen.poner(static_cast<std::size_t>(*rc::gen::inRange(0, 45)),
                         registroDeMinuto(*rc::gen::inRange(0, 40) * 10, *rc::gen::inRange(0, 3)));
        }
        const bool parcial = *rc::gen::inRange(0, 4) == 0;
        const auto largo =
            parcial ? static_cast<std::size_t>(*rc::gen::inRange(384, 384 + 60 * 32)) : kBytesMemoria;
        return imagen.bytes(largo);
    });
}

// Refused images are no part of a set that may come in any order. An erased number is the station's.
inline void tomarSinRehusar(Almacen& almacen, const std::vector<std::uint8_t>& imagen,
                            const Procedencia& procedencia = {"prueba",
                                                              Incorporada(std::chrono::seconds(1))}) {
    // Another archive's word is taken: this one refuses none.
    const auto otro = AlmacenSqlite::temporal();
    Archivo ajeno(*otro);
    const auto serie = serieDe(imagen) ? std::nullopt : std::optional<std::string>("02080050");
    ajeno.incorporar(imagen, {.serie = serie, .como = {}}, procedencia);
    Archivo(almacen).copiarDe(ajeno, std::nullopt, [] {});
}

}  // namespace telvane
