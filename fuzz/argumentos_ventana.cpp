// The window's arguments, one a line; read, never carried out.
#include <vector>

#include "app/opciones.h"
#include "fuzz/azar.h"
#include "link/mapa_com.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* datos, std::size_t cuantos) {
    using namespace telvane;
    Entrada entrada(datos, cuantos);
    std::vector<std::string> argumentos;
    while (entrada.queda()) argumentos.push_back(entrada.linea());
    const auto ordenes = leerOrdenes(argumentos);
    const bool corre = ordenes.opciones.has_value();
    exigirQue(corre == (ordenes.salida.empty() && ordenes.error.empty()));
    exigirQue(ordenes.estado == (ordenes.error.empty() ? 0 : 2));
    if (!corre) return 0;
    // What the program does with them later must not fail there.
    if (!ordenes.opciones->com.empty()) static_cast<void>(MapaCom::fijo(ordenes.opciones->com));
    return 0;
}
