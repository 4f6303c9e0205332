#include "historico/abrir_archivo.h"

#include <fmt/format.h>

#include "consola/codigos_salida.h"
#include "platform/abridor.h"
#include "platform/texto_visible.h"

namespace telvane {

void abrirConElEscritorio(const std::string& ruta) {
    if (!lanzarAbridor(ruta)) {
        throw ErrorCli(
            CodigoSalida::fallo,
            fmt::format("{} está guardado, pero no se pudo abrir: falta xdg-open (paquete xdg-utils)",
                        nombreVisible(ruta)));
    }
}

}  // namespace telvane
