#include "data/pasos_descarga.h"

#include "link/protocolo.h"

namespace telvane {

Paso<HitoDescarga> pasoDescarga(std::int32_t contador, std::int32_t ultimoBloque, std::uint8_t byte) {
    if (contador < kPrimeraRespuesta || contador > ultimoBloque) return {.hito = HitoDescarga::error};
    if (contador == kPrimeraRespuesta) {
        if (byte != kApertura) return {.hito = HitoDescarga::error};
        return {HitoDescarga::saludo, kSaludo};
    }
    if (contador == kSegundaRespuesta) {
        if (byte != kSaludo) return {.hito = HitoDescarga::error};
        return {HitoDescarga::comienzo, kApertura};
    }
    return {.hito = HitoDescarga::bloque};
}

Paso<HitoDescarga> finDeBloque(std::size_t sobran) {
    if (sobran > 0) return {.hito = HitoDescarga::error};
    return {HitoDescarga::bloque, kApertura};
}

}  // namespace telvane
