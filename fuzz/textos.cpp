// Texts that users type and that devices are named with: dates, times, line settings, the map of ports, code
// page.
#include <vector>

#include "fuzz/azar.h"
#include "link/mapa_com.h"
#include "link/protocolo.h"
#include "link/puerto_serie.h"
#include "loggerconfig/edicion.h"
#include "platform/cp1252.h"
#include "regional/fecha_texto.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* datos, std::size_t cuantos) {
    using namespace telvane;
    Entrada entrada(datos, cuantos);
    const auto utf8 = utf8DeCp1252(entrada.resto());
    exigirQue(cp1252DeUtf8(utf8) == std::string(entrada.resto().begin(), entrada.resto().end()));
    exigirQue(caracteres(utf8) == cuantos);

    const auto todo = std::string(entrada.resto().begin(), entrada.resto().end());
    exigirQue(cp1252DeUtf8(todo).size() <= todo.size());
    if (const auto hora = leerHora(todo)) exigirQue(hora->count() >= 0 && hora->count() < 86400);
    if (const auto fecha = leerFechaCorta(todo))
        exigirQue(fecha->mes >= 1 && fecha->mes <= 12 && fecha->dia <= 31);
    try {
        const auto linea = AjustesLinea::leer(todo);
        exigirQue(linea.bitsDatos >= 5 && linea.bitsDatos <= 8);
    } catch (const ErrorPuerto& error) {
        exigirQue(error.motivo() == MotivoPuerto::lineaInvalida);
    }
    std::vector<std::string> pares;
    while (entrada.queda()) pares.push_back(entrada.linea());
    try {
        const auto mapa = MapaCom::fijo(pares);
        for (const int numero : mapa.numeros()) exigirQue(numero >= 1 && numero <= kUltimoPuerto);
    } catch (const ErrorPuerto& error) {
        exigirQue(error.motivo() == MotivoPuerto::lineaInvalida);
    }
    return 0;
}
