#include "cli/estado_envio.h"

#include <fmt/format.h>

namespace telvane {

std::string estadoDelEnvio(std::size_t enviados, std::size_t total, const std::string& quePasa,
                           const std::string& comprobar, const std::string& repetir) {
    if (enviados == 0) {
        return fmt::format("No se envió nada: {} siguen como estaban. Para intentarlo otra vez, {}.", quePasa,
                           repetir);
    }
    if (enviados < total) {
        return fmt::format(
            "{} {} de {} bytes, y el registrador no cambia nada hasta el último: {} deben seguir "
            "como estaban. Compruébelo con \"telvane-cli configuracion\" y {}.",
            enviados == 1 ? "Se envió" : "Se enviaron", enviados, total, quePasa, repetir);
    }
    return fmt::format("Se envió todo y no se pudo confirmar. {}", comprobar);
}

}  // namespace telvane
