// Base files (".rgt"): the raw memory image, one byte a byte, no header, no checksum. Byte k of the file is
// byte k mod 64 of block k div 64; a whole image is 262144 bytes.
#pragma once

#include <filesystem>
#include <string>

#include "data/estado_datos.h"
#include "link/enlace.h"
#include "loggerconfig/estado_config.h"
#include "platform/tarea.h"
#include "ui/forma_progress.h"

namespace telvane {

class ArchivoBase {
   public:
    ArchivoBase(Enlace& enlace, const EstadoConfig& config, EstadoDatos& datos, FormaProgress& progress)
        : enlace_(enlace), config_(config), datos_(datos), progress_(progress) {}

    // Keeps the downloaded image under datos.carpetaBase and prints its path, or the reason why not.
    void guardarDescarga();
    // Click on Command43: fills memoria from a chosen file as far as it reaches, and nothing else.
    Tarea<> importar();

   private:
    void cargar(const std::vector<std::uint8_t>& bytes);

    Enlace& enlace_;
    const EstadoConfig& config_;
    EstadoDatos& datos_;
    FormaProgress& progress_;
};

// "<serial>_<yyyymmdd>_<hhmmss>.rgt", without path parts whatever the serial number holds.
std::string nombreArchivoBase(const std::string& digitosSerie, const FechaHora& momento);

}  // namespace telvane
