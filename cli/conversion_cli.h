// One image into one table, and what is to be told about it.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "data/conversion.h"
#include "platform/reloj.h"

namespace telvane {

// What all images of one run share.
struct TrabajoDeConversion {
    Formato formato;
    Perfil perfil;
    OrigenConfig origen;
    FechaHora momento;
};

struct Convertido {
    ArchivoDatos archivo;
    std::string aviso;
};

// The image's first bytes stand where the converter reads them; nombre: the input's, as it is shown. Throws
// ErrorCli, without it, where there are none, or where they are no memory.
Convertido convertirImagen(Conversor& conversor, const TrabajoDeConversion& trabajo, std::size_t bytes,
                           std::string_view nombre);

}  // namespace telvane
