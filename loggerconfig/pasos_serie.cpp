#include "loggerconfig/pasos_serie.h"

#include <algorithm>

namespace telvane {

SerieEmpacada empacarSerie(std::string_view digitos) {
    const auto cifra = [&](std::size_t i) {
        return i < digitos.size() ? static_cast<unsigned>(digitos[i] - '0') & 15u : 0u;
    };
    SerieEmpacada serie{};
    for (std::size_t k = 0; k < serie.size(); ++k) {
        serie[k] = static_cast<std::uint8_t>(cifra(2 * k) * 16 + cifra(2 * k + 1));
    }
    return serie;
}

namespace {

std::string motivoHasta(char ultima, const std::string& texto) {
    const bool cifras =
        std::all_of(texto.begin(), texto.end(), [&](char c) { return c >= '0' && c <= ultima; });
    return cifras && texto.size() == kDigitosSerie ? ""
                                                   : "el número de serie tiene 8 cifras, ceros incluidos";
}

}  // namespace

std::string motivoSerie(const std::string& texto) {
    return motivoHasta('9', texto);
}
std::string motivoSerieMostrada(const std::string& texto) {
    constexpr char kDelNibbleMayor = '0' + 15;
    return motivoHasta(kDelNibbleMayor, texto);
}

Paso<HitoEnvio> pasoSerie(std::int32_t contador, const SerieEmpacada& serie) {
    if (contador == kPrimeraRespuesta) return {.respuesta = kEscribirSerie};
    constexpr auto kUltimo = static_cast<std::int32_t>(kRespuestasSerie);
    if (contador < kPrimeraRespuesta || contador > kUltimo) return {.hito = HitoEnvio::fueraDePaso};
    if (contador == kUltimo) return {.hito = HitoEnvio::fin, .respuesta = serie.back()};
    return {.respuesta = serie[static_cast<std::size_t>(contador - kPrimeraRespuesta - 1)]};
}

}  // namespace telvane
