// How an image came from its logger: what the download wrote beside it ("X.rgt.json" or "X.json"). An archive
// keeps it with the image (Almacen::descargas); the image itself says nothing of this.
#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "historico/ficha_descarga.h"
#include "historico/imagen.h"

namespace telvane {

// A file that is there and is no such record of the image; the text says why, in Spanish.
class ErrorFicha : public std::runtime_error {
   public:
    using std::runtime_error::runtime_error;
};

// What a record has to agree with, and the UTC of this PC: no download is of tomorrow.
struct ImagenConFicha {
    std::filesystem::path archivo;
    BytesImagen bytes;
    std::chrono::sys_seconds ahora{};
};

// Throws ErrorFicha where the text is none, or is that of another image.
FichaDescarga leerFicha(std::string_view contenido, const ImagenConFicha& imagen);

// The one that belongs to a base file: the first of "X.rgt.json" and "X.json" that is one. defectos: why
// another one is none, with its name.
struct FichaHallada {
    std::optional<FichaDescarga> ficha;
    std::vector<std::string> defectos;
};
FichaHallada fichaJuntoA(const ImagenConFicha& imagen);

}  // namespace telvane
