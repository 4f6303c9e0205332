// telvane-historico imagenes
#include <memory>
#include <string>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "historico/ordenes.h"
#include "historico/textos_historico.h"
#include "platform/texto_visible.h"

namespace telvane {

namespace {

struct Opciones {
    std::optional<std::string> estacion;
    bool json = false;
};

std::string objeto(const EstacionGuardada& estacion, const FichaImagen& ficha) {
    nlohmann::ordered_json json;
    json["imagen"] = textoDe(ficha.huella);
    json["estacion"] = estacion.nombre;
    json["bytes"] = ficha.bytes;
    json["reloj"] = ficha.reloj ? nlohmann::ordered_json(isoDe(*ficha.reloj)) : nlohmann::ordered_json();
    json["incorporada"] = isoDe(ficha.incorporada);
    json["origen"] = ficha.origen;
    json["muestras"] = ficha.muestras;
    json["retrocesos"] = ficha.retrocesos;
    return json.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

std::string linea(const EstacionGuardada& estacion, const FichaImagen& ficha) {
    return fmt::format(
        "{}  estación {}  {} bytes  reloj {}  {} muestras  {} retrocesos  incorporada {}  {}\n",
        textoDe(ficha.huella), estacion.nombre, ficha.bytes, ficha.reloj ? isoDe(*ficha.reloj) : "incorrecto",
        ficha.muestras, ficha.retrocesos, isoDe(ficha.incorporada), sinControles(ficha.origen));
}

void imagenes(ContextoHistorico& contexto, const Opciones& opciones) {
    std::string texto;
    {
        const auto almacen = contexto.abrir(Uso::leer);
        Lectura lectura(*almacen);
        const auto estaciones = opciones.estacion
                                    ? std::vector<EstacionGuardada>{lectura.estacion(*opciones.estacion)}
                                    : lectura.estaciones();
        for (const auto& estacion : estaciones) {
            for (const auto& ficha : lectura.imagenes(estacion)) {
                texto += opciones.json ? objeto(estacion, ficha) : linea(estacion, ficha);
            }
        }
    }
    contexto.consola.resultado(texto);
}

}  // namespace

void declararImagenes(Argumentos& argumentos, ContextoHistorico& contexto) {
    auto orden = argumentos.orden("imagenes", "Muestra las imágenes que hay");
    const auto opciones = std::make_shared<Opciones>();
    orden.opcion(opciones->estacion,
                 {.nombre = "--estacion", .valor = "CIFRAS", .ayuda = "Solo las de esta estación"});
    orden.bandera(opciones->json, "--json", "Un objeto JSON por imagen");
    orden.alElegir(
        [&contexto, opciones] { contexto.orden = [&contexto, opciones] { imagenes(contexto, *opciones); }; });
}

}  // namespace telvane
