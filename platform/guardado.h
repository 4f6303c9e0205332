// Saving a file whole: the old content stays until the new one is on disk.
#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

namespace telvane {

class ErrorGuardado : public std::runtime_error {
   public:
    using std::runtime_error::runtime_error;
};

// Writes to a temporary file beside the destination, fsyncs it, renames it over and fsyncs the folder. A
// destination that is a symbolic link is written where it points; an existing one keeps its mode. Throws
// ErrorGuardado with the file's name and the reason in Spanish ("no se pudo guardar x.csv: no queda espacio
// en el disco"); the old file is untouched then and no temporary file stays. A destination that exists and is
// no regular file, or may not be written, is refused.
void guardarAtomico(const std::filesystem::path& ruta, std::span<const std::uint8_t> bytes);
void guardarAtomico(const std::filesystem::path& ruta, std::string_view bytes);

// The reason of an errno value in Spanish, whatever the locale: "no queda espacio en el disco".
std::string motivoSistema(int numero);

}  // namespace telvane
