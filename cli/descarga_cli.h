// A whole download with everything that may go wrong on its way.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "cli/consola.h"
#include "cli/entorno_cli.h"
#include "cli/registrador_cli.h"

namespace telvane {

struct PeticionDescarga {
    std::filesystem::path base;  // empty: the image is only returned
    bool verificar = false;      // downloads again until two images agree
    int reintentos = 2;          // attempts beyond those that are needed
};

// Downloads the memory, telling its progress; the serial number is the one just read from this logger. Each
// block is on the disk as it comes (see ArchivoParcial). An attempt that breaks off starts again from the
// first block; where two images overlap they are compared, because the line carries no checksum. Returns the
// 262144 bytes. When it ends in an exception, the user has been told what is left in the partial file.
std::vector<std::uint8_t> descargarImagen(EntornoCli& entorno, Consola& consola, RegistradorCli& registrador,
                                          const std::string& serie, const PeticionDescarga& peticion);

// The first block in which two images of one logger contradict each other, as far as both reach. No
// contradiction are samples in the place of erased records, and the parts of the header that change by
// themselves.
std::optional<std::size_t> primeraDiferencia(std::span<const std::uint8_t> antes,
                                             std::span<const std::uint8_t> ahora);

}  // namespace telvane
