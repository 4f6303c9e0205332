// A fault as telvane-sim takes it.
#include "simulator/fallo.h"

#include <stdexcept>

#include "fuzz/azar.h"
#include "link/protocolo.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* datos, std::size_t cuantos) {
    using namespace telvane;
    try {
        const auto fallo = Fallo::leer(Entrada(datos, cuantos).texto());
        exigirQue(fallo.indice < kRespuestasDescarga);
        static_cast<void>(efectoDe(fallo, 0x55));
    } catch (const std::invalid_argument&) {
    }
    return 0;
}
