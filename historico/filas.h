// What the rows of an archive have alike in either store.
#pragma once

#include <cstdint>
#include <string_view>

#include "historico/almacen.h"

namespace telvane {

// Of an image's note how many columns there are; of the record of a download which, in the order in which
// they are read, and how many.
namespace columnas_de_filas {
inline constexpr int kDeFicha = 10;
inline constexpr std::string_view kDescarga =
    "descargada,puerto,dispositivo,desfase_s,verificada,reintentos,errores_de_linea";
inline constexpr int kDeDescarga = 7;
}  // namespace columnas_de_filas

// A moment of the logger: seconds since 1970 of its own local time.
inline std::int64_t segundosDe(Instante instante) {
    return instante.time_since_epoch().count();
}

}  // namespace telvane
