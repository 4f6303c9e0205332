#include "data/pasos_descarga.h"

#include "link/protocolo.h"

namespace telvane {

namespace {

constexpr std::int32_t kPrimeraRespuesta = 1;
constexpr std::int32_t kSegundaRespuesta = 2;

}  // namespace

PasoDescarga pasoDescarga(std::int32_t contador, std::int32_t ultimoBloque, std::uint8_t byte) {
    if (contador < kPrimeraRespuesta || contador > ultimoBloque) return {};
    if (contador == kPrimeraRespuesta) {
        if (byte != kApertura) return {};
        return {HitoDescarga::saludo, kSaludo};
    }
    if (contador == kSegundaRespuesta) {
        if (byte != kSaludo) return {};
        return {HitoDescarga::comienzo, kApertura};
    }
    return {HitoDescarga::bloque, {}};
}

}  // namespace telvane
