// The saved files, read back as a spreadsheet would.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace telvane {

// Records of the simulated logger's memory: 4089 blocks of two.
inline constexpr std::size_t kMuestrasSimuladas = 8178;
inline constexpr std::uintmax_t kBytesArchivoBase = 262144;

struct ArchivoCsv {
    std::vector<std::string> encabezado;  // up to the column names, without CR LF; Windows-1252
    std::string columnas;
    std::vector<std::string> muestras;
    std::string resto;  // what follows the last sample
};
ArchivoCsv leerCsv(const std::filesystem::path& ruta);

// The whole text but for the line with date and time of the export.
std::string sinMomento(const std::filesystem::path& ruta);

}  // namespace telvane
