#include "data/rutinas_imagen.h"

#include <utility>

#include "ui/textos.h"

namespace telvane {

namespace {

constexpr std::string_view kErrorMatriz = "error en matriz";

}  // namespace

void RutinasImagen::proceso(int posicion, std::uint8_t byte) {
    if (!decodificador_.proceso(posicion, byte)) forma_.imprimir(std::string(kErrorMatriz));
}

std::string RutinasImagen::tomarLineas() {
    return std::exchange(decodificador_.lineaMuestras, {});
}

void RutinasImagen::config(std::int32_t contador, std::uint8_t byte) {
    if (contador == 0) cabecera_.recogido.clear();
    // What a byte does not tell stays as the last reading left it.
    cabecera_.digitosSerie = config_.digitosSerie;
    cabecera_.intervalo = config_.intervalo;
    if (!cabecera_.config(contador, byte)) {
        forma_.imprimir(std::string(textos::kErrorContador));
        return;
    }
    config_.textoConfig += std::exchange(cabecera_.texto, {});
    config_.digitosSerie = cabecera_.digitosSerie;
    config_.intervalo = cabecera_.intervalo;
    if (contador + 1 == static_cast<std::int32_t>(registro_config::kUsuario)) {
        config_.numeroSerie = numeroDeSerie(cabecera_.digitosSerie);
    }
}

}  // namespace telvane
