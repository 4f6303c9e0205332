#include "cli/argumentos.h"

namespace telvane {

std::string motivoSegundos(const std::string& texto) {
    return motivoRango(texto, 1, 3600);
}
std::string motivoCuenta(const std::string& texto) {
    return motivoRango(texto, 1, 1'000'000'000);
}
std::string motivoReintentos(const std::string& texto) {
    return motivoRango(texto, 0, 1000);
}

}  // namespace telvane
