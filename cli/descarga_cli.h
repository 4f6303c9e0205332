// A whole download with everything that may go wrong on its way.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "cli/entorno_cli.h"
#include "cli/registrador_cli.h"
#include "cli/reintentos.h"
#include "consola/consola.h"
#include "loggerconfig/datos_config.h"
#include "platform/destino.h"

namespace telvane {

struct PeticionDescarga {
    std::optional<Destino> base;            // none: the image is only returned
    bool verificar = false;                 // downloads again until two images agree
    int reintentos = Reintentos::kUsuales;  // attempts beyond those that are needed
    std::string serie;                      // 8 digits that the image must bear; empty: any
};

struct ImagenDescargada {
    std::vector<std::uint8_t> bytes;  // 262144
    int reintentos = 0;               // attempts that broke off, contradicted another or bore another number
};

// Downloads the memory, telling its progress. Each block is on the disk as it comes (see ArchivoParcial). An
// attempt that breaks off starts again from the first block, and so does one whose image bears another
// serial number than was asked for; where two images overlap they are compared, because the line carries no
// checksum. The machine is kept awake meanwhile. When it ends in an exception, the user has been told what is
// left in the partial file.
ImagenDescargada descargarImagen(EntornoCli& entorno, Consola& consola, RegistradorCli& registrador,
                                 const PeticionDescarga& peticion);

// Tells when the configuration that was read says another serial number, other texts or another interval: the
// image's own count.
void decirOtraCabecera(Consola& consola, const DatosConfig& leida, std::span<const std::uint8_t> imagen);

}  // namespace telvane
