#include "historico/nombre_estacion.h"

#include <fmt/format.h>

#include "consola/nombres.h"
#include "loggerconfig/datos_config.h"
#include "loggerconfig/pasos_serie.h"
#include "platform/numero.h"

namespace telvane {

namespace {

constexpr std::string_view kRecuperada = "recuperada.";

bool valeJuntoALaSerie(std::string_view junto) {
    return motivoNombre(std::string(junto)).empty() || esNombreRecuperado(junto);
}

}  // namespace

bool esSerie(const std::string& texto) {
    return motivoSerieMostrada(texto).empty();
}

bool esNombreDe(std::string_view nombre, std::string_view serie) {
    if (!nombre.starts_with(serie)) return false;
    const auto resto = nombre.substr(serie.size());
    return resto.empty() || (resto.size() > 1 && resto.front() == '/' && valeJuntoALaSerie(resto.substr(1)));
}

std::string nombreJuntoALaSerie(const std::string& nombre) {
    const auto barra = nombre.find('/');
    if (barra == std::string::npos) return {};
    auto junto = nombre.substr(barra + 1);
    return valeJuntoALaSerie(junto) ? junto : std::string();
}

std::string nombreRecuperado(int vez) {
    return fmt::format("{}{}", kRecuperada, vez);
}

bool esNombreRecuperado(std::string_view junto) {
    return junto.starts_with(kRecuperada) && numeroDe<int>(junto.substr(kRecuperada.size())).value_or(0) > 0;
}

bool esDeVariante(const std::string& serie) {
    return llevaEvaporacion(numeroDeSerie(serie));
}

}  // namespace telvane
