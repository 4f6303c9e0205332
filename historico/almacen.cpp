#include "historico/almacen.h"

namespace telvane {

EstacionGuardada Almacen::crearEstacion(const std::string& nombre, const std::string& serie,
                                        bool evaporacion) {
    const EstacionGuardada estacion{
        .id = idLibre(), .nombre = nombre, .serie = serie, .evaporacion = evaporacion, .resumen = {}};
    agregarEstacion(estacion);
    return estacion;
}

IdEstacion Almacen::idLibre(const std::set<IdEstacion>& tomados) {
    const auto mayor = mayorId();
    auto id = mayor >= 0 && mayor < kMayorId ? mayor + 1 : 1;
    while (tomados.contains(id) || seNombra(id)) ++id;
    return id;
}

}  // namespace telvane
