#include "historico/nombre_estacion.h"

#include "consola/nombres.h"
#include "loggerconfig/datos_config.h"
#include "loggerconfig/pasos_serie.h"

namespace telvane {

bool esSerie(const std::string& texto) {
    return motivoSerieMostrada(texto).empty();
}

bool esNombreDe(std::string_view nombre, std::string_view serie) {
    if (!nombre.starts_with(serie)) return false;
    const auto resto = nombre.substr(serie.size());
    return resto.empty() ||
           (resto.size() > 1 && resto.front() == '/' && motivoNombre(std::string(resto.substr(1))).empty());
}

std::string nombreJuntoALaSerie(const std::string& nombre) {
    const auto barra = nombre.find('/');
    if (barra == std::string::npos) return {};
    auto junto = nombre.substr(barra + 1);
    return motivoNombre(junto).empty() ? junto : std::string();
}

bool esDeVariante(const std::string& serie) {
    return llevaEvaporacion(numeroDeSerie(serie));
}

}  // namespace telvane
