// The step machines of the exchanges in which the logger's bytes pace ours, and the messages that they send.
#include <algorithm>
#include <cstring>

#include "data/memoria.h"
#include "data/pasos_descarga.h"
#include "fuzz/azar.h"
#include "loggerconfig/pasos_escritura.h"
#include "loggerconfig/pasos_serie.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* datos, std::size_t cuantos) {
    using namespace telvane;
    Entrada entrada(datos, cuantos);
    std::int32_t contador = 0;
    const auto cuatro = entrada.bytes(sizeof contador);
    std::memcpy(&contador, cuatro.data(), cuatro.size());
    const auto byte = entrada.byte();

    const auto descarga = pasoDescarga(contador, kUltimoBloque, byte);
    if (contador < 1 || contador > kUltimoBloque) exigirQue(descarga.hito == HitoDescarga::error);

    ConfigAEnviar config;
    std::array<std::string, 5> textos;
    for (std::size_t i = 0; i < textos.size(); ++i) {
        textos[i] = entrada.linea();
        config.textos[i] = textos[i];
    }
    config.intervaloCodigo = byte;
    config.hora = byte % 24;
    config.minuto = byte % 60;
    config.dia = byte % 31 + 1;
    const auto mensaje = mensajeConfig(config);
    exigirQue(mensaje.size() == kBytesMensajeConfig);
    const auto escritura = pasoEscritura(contador, mensaje);
    exigirQue(escritura.respuesta.has_value() != (escritura.hito == HitoEnvio::fueraDePaso));

    const auto serie = pasoSerie(contador, empacarSerie(entrada.texto()));
    exigirQue(serie.respuesta.has_value() != (serie.hito == HitoEnvio::fueraDePaso));
    return 0;
}
