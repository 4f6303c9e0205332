// The live frame.
#include <algorithm>

#include "fuzz/azar.h"
#include "live/marco_en_linea.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* datos, std::size_t cuantos) {
    using namespace telvane;
    Entrada entrada(datos, cuantos);
    std::array<std::uint8_t, kBytesMarco> marco{};
    for (auto& byte : marco) byte = entrada.byte();
    const auto lineas = lineasMarco(textosMarco(decodificarMarco(marco)));
    exigirQue(std::count(lineas.begin(), lineas.end(), '\n') == 8);
    exigirQue(lineas.find("-0%") == std::string::npos && lineas.find("=-0.0\r") == std::string::npos);
    return 0;
}
