#include "historico/abrir_archivo.h"

#include <system_error>

#include <fmt/format.h>

#include "consola/codigos_salida.h"
#include "platform/abridor.h"
#include "platform/motivos.h"
#include "platform/texto_visible.h"

namespace telvane {

void abrirConElEscritorio(const std::string& ruta) {
    try {
        lanzarAbridor(ruta);
    } catch (const std::system_error& error) {
        const bool falta = error.code() == std::errc::no_such_file_or_directory;
        throw ErrorCli(CodigoSalida::fallo,
                       fmt::format("{} está guardado, pero no se pudo abrir: {}", nombreVisible(ruta),
                                   falta ? "falta xdg-open (paquete xdg-utils)"
                                         : motivoSinConsejo(error.code().value())));
    }
}

}  // namespace telvane
