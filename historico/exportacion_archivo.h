// An archive's samples as a table, line by line, as the conversion of an image writes them.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "calidad/limites.h"
#include "data/formato.h"
#include "historico/lectura.h"
#include "platform/reloj.h"

namespace telvane {

struct PeticionTabla {
    Formato formato = Formato::csv;
    Periodo periodo;
    Cuales cuales = Cuales::lasQueCuentan;
    std::optional<Limites> calidad;  // one more column or member
    FechaHora momento;               // that the file tells as its own
};

// Gives how many samples were written. alEscribir gets the file's bytes piece by piece, and may end it with
// an exception.
std::size_t escribirTabla(Lectura& lectura, const EstacionGuardada& estacion, const PeticionTabla& peticion,
                          const std::function<void(std::string_view)>& alEscribir);

}  // namespace telvane
