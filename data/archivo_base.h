// Base files (".rgt"): the raw memory image, one byte a byte, no header, no checksum. Byte k of the file is
// byte k mod 64 of block k div 64; a whole image is 262144 bytes.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "data/estado_datos.h"
#include "link/enlace.h"
#include "platform/destino.h"
#include "platform/tarea.h"
#include "ui/forma_progress.h"

namespace telvane {

class Edicion;

class ArchivoBase {
   public:
    ArchivoBase(Enlace& enlace, EstadoDatos& datos, FormaProgress& progress, const Edicion& edicion)
        : enlace_(enlace), datos_(datos), progress_(progress), edicion_(edicion) {}

    // Keeps the downloaded image under datos.carpetaBase and prints its path, or the reason why not.
    void guardarDescarga();
    // Click on Command43: fills memoria from a chosen file as far as it reaches, and nothing else.
    Tarea<> importar();

   private:
    void cargar(const std::vector<std::uint8_t>& bytes);

    Enlace& enlace_;
    EstadoDatos& datos_;
    FormaProgress& progress_;
    const Edicion& edicion_;
};

// What to tell of a base file without a byte.
inline constexpr std::string_view kBaseVacia = "el archivo base está vacío: descárguelo de nuevo, o dé otro";
// Where a memory image may be written: it is a new file, for a logger's bytes are never replaced unless
// somebody asks for it, and never has the name of a part of one. Nobody can ask for a data sheet's place.
ReglaDestino reglaDeBase(bool reemplazar = false);
// Where anything made of an image may be written: over an earlier one, but never under the name of a base
// file or of a part of one, nor over a memory or a data sheet, which nothing makes again.
ReglaDestino reglaDeTabla();
// What the standard streams of a program may lead to: the same, as far as a memory is concerned, but for what
// may be a log.
ReglaDestino reglaDeFlujos();
// The same of a download's data sheet, which is a new file: nothing makes again what another one, or a text
// of somebody's, says. Where somebody asks for it, it takes an earlier one's place, and nothing else's.
ReglaDestino reglaDeFicha(bool reemplazar = false);

// The name, "<name>_2.rgt" and so on; vez: from 1.
std::filesystem::path rutaDeVez(const std::filesystem::path& primera, int vez);
// The first of these under which nothing stands yet.
std::filesystem::path rutaLibre(const std::filesystem::path& primera);
// One in the folder, made of the name below.
std::filesystem::path rutaBaseLibre(const std::filesystem::path& carpeta, const std::string& digitosSerie,
                                    const FechaHora& momento);
// "<serial>_<yyyymmdd>_<hhmmss>.rgt", without path parts whatever the serial number holds.
std::string nombreArchivoBase(const std::string& digitosSerie, const FechaHora& momento);

}  // namespace telvane
