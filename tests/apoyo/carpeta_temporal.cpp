#include "tests/apoyo/carpeta_temporal.h"

#include <stdlib.h>

#include <cerrno>
#include <system_error>

namespace telvane {

CarpetaTemporal::CarpetaTemporal() {
    auto modelo = (std::filesystem::temp_directory_path() / "telvane-XXXXXX").string();
    if (::mkdtemp(modelo.data()) == nullptr) throw std::system_error(errno, std::generic_category(), modelo);
    ruta_ = modelo;
}

CarpetaTemporal::~CarpetaTemporal() {
    std::error_code sinImportancia;
    std::filesystem::remove_all(ruta_, sinImportancia);
}

}  // namespace telvane
