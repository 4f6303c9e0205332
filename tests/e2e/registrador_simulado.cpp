#include "tests/e2e/registrador_simulado.h"

#include <stdexcept>

#include "tests/apoyo/leer_todo.h"

namespace telvane {

RegistradorSimulado::RegistradorSimulado(const std::vector<std::string>& opciones)
    : enlace_(carpeta_ / "COM1") {
    std::vector<std::string> orden = {TELVANE_SIM, "--enlace", enlace_.string(), "--memoria",
                                      archivo().string()};
    orden.insert(orden.end(), opciones.begin(), opciones.end());
    proceso_ = std::make_unique<Proceso>(orden);
    if (!proceso_->linea()) throw std::runtime_error("telvane-sim: " + proceso_->errores());
}

std::string RegistradorSimulado::memoria() const {
    return leerTodo(archivo());
}

}  // namespace telvane
