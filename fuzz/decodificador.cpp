// The record decoder under one of its rule sets: byte by byte and by whole blocks it must write the same.
#include "data/decodificador.h"

#include <algorithm>
#include <array>

#include "data/linea_muestra.h"
#include "fuzz/azar.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* datos, std::size_t cuantos) {
    using namespace telvane;
    Entrada entrada(datos, cuantos);
    const bool evaporacion = (entrada.byte() & 1) != 0;
    Decodificador porBytes(Perfil::PERFIL);
    Decodificador porBloques(Perfil::PERFIL);
    porBytes.evaporacion(evaporacion);
    porBloques.evaporacion(evaporacion);
    while (entrada.queda()) {
        std::array<std::uint8_t, kBytesBloque> bloque{};
        const auto vienen = entrada.bytes(bloque.size());
        std::copy(vienen.begin(), vienen.end(), bloque.begin());
        for (std::size_t i = 0; i < bloque.size(); ++i) {
            exigirQue(porBytes.proceso(static_cast<int>(i), bloque[i]));
        }
        const auto buenos = porBloques.procesoBloque(bloque);
        std::string texto;
        buenos.recorrer([&](BytesMuestraConst registro) {
            std::array<char, kLineaMaxima> linea{};
            texto.append(linea.data(), escribirLinea(linea.data(), registro, evaporacion));
        });
        exigirQue(texto == porBytes.lineaMuestras);
        exigirQue(static_cast<std::uint32_t>(std::count(texto.begin(), texto.end(), '\n')) ==
                  buenos.cuantos());
        exigirQue(porBytes.registroValido() == porBloques.registroValido());
        porBytes.lineaMuestras.clear();
    }
    return 0;
}
