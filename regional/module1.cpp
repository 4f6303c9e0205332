#include "regional/module1.h"

#include <algorithm>
#include <string>

namespace telvane {

namespace {

std::string nombreCompleto(const ValorRegional& valor) {
    return std::string(kClaveRegional) + std::string(valor.nombre);
}

// The lines of the values that differ; empty when all are right.
std::string diferencias(Registro& registro) {
    std::string lineas;
    for (const auto& valor : kValoresRegionales) {
        const auto leido = registro.RegRead(nombreCompleto(valor));
        if (leido != valor.exigido) lineas.append("\r").append(valor.rotulo).append(leido);
    }
    return lineas;
}

void escribirTodos(Registro& registro) {
    auto enOrden = kValoresRegionales;
    std::sort(enOrden.begin(), enOrden.end(),
              [](const auto& a, const auto& b) { return a.ordenEscritura < b.ordenEscritura; });
    for (const auto& valor : enOrden) registro.RegWrite(nombreCompleto(valor), std::string(valor.exigido));
}

}  // namespace

Tarea<bool> configregional(Registro& registro, Dialogos& dialogos) {
    const auto lineas = diferencias(registro);
    if (lineas.empty()) co_return true;
    Mensaje mensaje(
        "Su Configuracion Regional no es la apropiada para este sistema.\r"
        "Desea cambiar estos valores?\r" +
            lineas + "\r\r Si decide Cancelar  el Sistema se Cerrará",
        Botones::aceptarCancelar, Icono::exclamacion);
    const auto respuesta = co_await preguntar(dialogos, std::move(mensaje));
    if (respuesta != Boton::aceptar) co_return false;
    escribirTodos(registro);
    co_return true;
}

}  // namespace telvane
