// An image and what is kept of it. That is put together by what it holds: its bytes, and what is noted of
// them, may stand under wrong names and in different stations, once somebody has changed the tables by hand.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "historico/almacen.h"
#include "historico/contenidos.h"

namespace telvane {

struct Pieza {
    Huella huella{};                            // which image it is
    IdEstacion estacion = 0;                    // the one to which it belongs
    std::optional<std::size_t> contenido = {};  // of Contenidos::todos
    std::optional<std::size_t> ficha = {};      // of the notes that were given
    std::optional<std::string> serie = {};      // of its header
    bool seLee = false;
};

// In how much two notes differ of where they stand and of what the image says.
std::size_t valoresDistintos(const Almacen::FichaGuardada& una, const Almacen::FichaGuardada& otra);

// Each after the one that it is packed upon. deOtros: images of which something else than contents' names and
// notes tells; a note of an image that nobody knows may be that of a content which has none.
std::vector<Pieza> piezasDe(Contenidos& contenidos, const std::vector<Almacen::FichaGuardada>& fichas,
                            const std::set<Huella>& deOtros);

}  // namespace telvane
