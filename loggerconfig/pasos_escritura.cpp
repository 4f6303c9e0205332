#include "loggerconfig/pasos_escritura.h"

#include "link/protocolo.h"
#include "loggerconfig/datos_config.h"
#include "platform/cp1252.h"

namespace telvane {

std::string rellenado(std::string_view texto, int ancho) {
    const auto cabe = static_cast<std::size_t>(ancho);
    auto largo = caracteres(texto);
    for (; largo > cabe && texto.ends_with(' '); --largo) texto.remove_suffix(1);
    for (; largo > cabe && texto.starts_with(' '); --largo) texto.remove_prefix(1);
    if (largo > cabe) return std::string(primerosCaracteres(texto, cabe));
    return std::string(cabe - largo, ' ') + std::string(texto);
}

std::string mensajeConfig(const ConfigAEnviar& config) {
    std::string mensaje;
    for (std::size_t campo = 0; campo < kAnchos.size(); ++campo) {
        mensaje += cp1252DeUtf8(rellenado(config.textos[campo], kAnchos[campo]));
    }
    const auto agregar = [&](std::uint8_t byte) { mensaje += static_cast<char>(byte); };
    agregar(config.intervaloCodigo);
    for (const int valor :
         {config.hora, config.minuto, config.segundo, config.dia, config.mes, config.anio % 100}) {
        agregar(empacarBcd(valor));
    }
    return mensaje;
}

Paso<HitoEnvio> pasoEscritura(std::int32_t contador, std::string_view mensaje) {
    if (contador == kPrimeraRespuesta) return {.respuesta = kEscribirConfig};
    constexpr auto kUltimo = static_cast<std::int32_t>(kRespuestasEscritura);
    if (contador < kPrimeraRespuesta || contador > kUltimo) return {.hito = HitoEnvio::fueraDePaso};
    const auto indice = static_cast<std::size_t>(contador - kPrimeraRespuesta - 1);
    return {.hito = contador == kUltimo ? HitoEnvio::fin : HitoEnvio::ninguno,
            .respuesta = static_cast<std::uint8_t>(mensaje[indice])};
}

}  // namespace telvane
