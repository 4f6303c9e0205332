#include "tests/e2e/registrador_simulado.h"

#include <stdexcept>

#include "tests/e2e/datos_guardados.h"

namespace telvane {

RegistradorSimulado::RegistradorSimulado(const std::string& baudios) : enlace_(carpeta_ / "COM1") {
    proceso_ = std::make_unique<Proceso>(std::vector<std::string>{
        TELVANE_SIM, "--enlace", enlace_.string(), "--baudios", baudios, "--memoria", archivo().string()});
    if (!proceso_->linea()) throw std::runtime_error("telvane-sim: " + proceso_->errores());
}

std::string RegistradorSimulado::memoria() const {
    return contenidoDe(archivo());
}

}  // namespace telvane
