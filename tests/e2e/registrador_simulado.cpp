#include "tests/e2e/registrador_simulado.h"

#include <stdexcept>

namespace telvane {

RegistradorSimulado::RegistradorSimulado() : enlace_(carpeta_ / "COM1") {
    proceso_ = std::make_unique<Proceso>(
        std::vector<std::string>{TELVANE_SIM, "--enlace", enlace_.string(), "--baudios", "0"});
    if (!proceso_->linea()) throw std::runtime_error("telvane-sim: " + proceso_->errores());
}

}  // namespace telvane
