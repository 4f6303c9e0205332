#include "tests/e2e/registrador_simulado.h"

#include <stdlib.h>

#include <stdexcept>

namespace telvane {

CarpetaPropia::CarpetaPropia() {
    auto nombre = (std::filesystem::temp_directory_path() / "telvane-e2e.XXXXXX").string();
    if (::mkdtemp(nombre.data()) == nullptr) throw std::runtime_error("mkdtemp " + nombre);
    ruta_ = nombre;
}

CarpetaPropia::~CarpetaPropia() {
    std::error_code error;
    std::filesystem::remove_all(ruta_, error);
}

RegistradorSimulado::RegistradorSimulado() : enlace_(carpeta_ / "COM1") {
    proceso_ = std::make_unique<Proceso>(
        std::vector<std::string>{TELVANE_SIM, "--enlace", enlace_.string(), "--baudios", "0"});
    if (!proceso_->linea()) throw std::runtime_error("telvane-sim: " + proceso_->errores());
}

}  // namespace telvane
