// How an image came from its logger: what the download wrote beside it ("X.rgt.json" or "X.json"). An archive
// keeps it with the image (Almacen::descargas); the image itself says nothing of this.
#pragma once

#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string_view>

#include "historico/ficha_descarga.h"
#include "historico/huella.h"

namespace telvane {

// A file that is there and is no such record of the image; the text says why, in Spanish.
class ErrorFicha : public std::runtime_error {
   public:
    using std::runtime_error::runtime_error;
};

// Throws ErrorFicha where the text is none, or is that of another image.
FichaDescarga leerFicha(std::string_view texto, const Huella& imagen);

// The one that belongs to a base file: the first of "X.rgt.json" and "X.json" that is there. nullopt: none
// is. Throws ErrorFicha with the file's name.
std::optional<FichaDescarga> fichaJuntoA(const std::filesystem::path& base, const Huella& imagen);

}  // namespace telvane
