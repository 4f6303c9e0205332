#include "historico/almacen.h"

#include <algorithm>

#include <fmt/format.h>

#include "historico/esquema.h"

namespace telvane {

EstacionGuardada Almacen::crearEstacion(const std::string& nombre, const std::string& serie,
                                        bool evaporacion) {
    EstacionGuardada estacion{
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

IdEstacion Almacen::mayorId() {
    return numero(fmt::format("SELECT CAST(coalesce(max(id),0) AS bigint) FROM {}estaciones", prefijo()));
}

bool Almacen::seNombra(IdEstacion estacion) {
    const auto en = [&](std::string_view tabla, std::string_view columna) {
        return numero(fmt::format("SELECT count(*) FROM (SELECT 1 FROM {}{} WHERE {}={} LIMIT 1) una",
                                  prefijo(), tabla, columna, estacion)) > 0;
    };
    return en("estaciones", "id") || std::ranges::any_of(kTablasConEstacion, [&](const auto& una) {
               return en(una.tabla, "estacion");
           });
}

std::int64_t Almacen::contarSinImagen(std::string_view tabla, std::string_view columna, IdEstacion estacion) {
    return numero(
        fmt::format("SELECT count(*) FROM {0}{1} t WHERE t.estacion={2} AND NOT EXISTS (SELECT 1 FROM "
                    "{0}imagenes i WHERE i.estacion=t.estacion AND i.huella=t.{3})",
                    prefijo(), tabla, estacion, columna));
}

std::vector<std::string> Almacen::sinEstacion(std::span<const TablaConEstacion> tablas) {
    std::vector<std::string> lista;
    for (const auto& [tabla, que] : tablas) {
        const auto cuantas = numero(
            fmt::format("SELECT count(*) FROM {0}{1} WHERE estacion NOT IN (SELECT id FROM {0}estaciones)",
                        prefijo(), tabla));
        if (cuantas > 0)
            lista.push_back(fmt::format("{} de una estación que no está: {}: {}", que, cuantas, kReponer));
    }
    return lista;
}

}  // namespace telvane
