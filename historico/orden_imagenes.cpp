// telvane-historico imagenes
#include <map>
#include <memory>
#include <string>

#include <fmt/format.h>

#include "consola/json.h"
#include "historico/ordenes.h"
#include "historico/textos_historico.h"
#include "platform/contados.h"
#include "platform/texto_visible.h"

namespace telvane {

namespace {

struct OpcionesImagenes {
    std::optional<std::string> estacion;
    bool json = false;
};

using Descargas = std::map<Huella, FichaDescarga>;

Json objeto(const FichaDescarga& descarga) {
    Json json;
    json.poner("descargada", isoDe(descarga.descargada));
    json.poner("puerto", descarga.puerto);
    json.poner("dispositivo", descarga.dispositivo);
    json.poner("desfase_s", descarga.desfase);
    json.poner("verificada", descarga.verificada);
    json.poner("reintentos", descarga.reintentos);
    json.poner("errores_de_linea", descarga.erroresDeLinea);
    return json;
}

std::string objeto(const EstacionGuardada& estacion, const FichaImagen& ficha, const Descargas& descargas) {
    Json json;
    json.poner("imagen", textoDe(ficha.huella));
    json.poner("estacion", estacion.nombre);
    json.poner("bytes", ficha.bytes);
    json.poner("reloj", ficha.reloj ? Json(isoDe(*ficha.reloj)) : Json());
    json.poner("incorporada", isoDe(ficha.incorporada));
    json.poner("origen", ficha.origen);
    json.poner("muestras", ficha.muestras);
    json.poner("retrocesos", ficha.retrocesos);
    if (const auto suya = descargas.find(ficha.huella); suya != descargas.end())
        json.poner("descarga", objeto(suya->second));
    return json.enUnaLinea();
}

std::string linea(const FichaDescarga& descarga) {
    return fmt::format(
        "  descargada {} de COM{} ({}){}{}", isoDe(descarga.descargada), descarga.puerto,
        descarga.dispositivo,
        descarga.desfase ? fmt::format(", desfase {:+} s", *descarga.desfase) : ", reloj incorrecto",
        descarga.verificada ? ", verificada" : "");
}

std::string linea(const EstacionGuardada& estacion, const FichaImagen& ficha, const Descargas& descargas) {
    const auto suya = descargas.find(ficha.huella);
    return fmt::format("{}  estación {}  {}  reloj {}  {}  {}  incorporada {}  {}{}\n", textoDe(ficha.huella),
                       estacion.nombre, contados(static_cast<std::int64_t>(ficha.bytes), "byte", "bytes"),
                       ficha.reloj ? isoDe(*ficha.reloj) : "incorrecto",
                       contados(ficha.muestras, "muestra", "muestras"),
                       contados(ficha.retrocesos, "retroceso", "retrocesos"), isoDe(ficha.incorporada),
                       nombreVisible(ficha.origen), suya == descargas.end() ? "" : linea(suya->second));
}

void imagenes(ContextoHistorico& contexto, const OpcionesImagenes& opciones) {
    std::string texto;
    {
        const auto almacen = contexto.abrir(Uso::leer);
        Lectura lectura(*almacen);
        const auto estaciones = opciones.estacion
                                    ? std::vector<EstacionGuardada>{lectura.estacion(*opciones.estacion)}
                                    : lectura.estaciones();
        for (const auto& estacion : estaciones) {
            const auto lista = lectura.descargas(estacion);
            const Descargas descargas(lista.begin(), lista.end());
            for (const auto& ficha : lectura.imagenes(estacion)) {
                texto +=
                    opciones.json ? objeto(estacion, ficha, descargas) : linea(estacion, ficha, descargas);
            }
        }
    }
    contexto.consola.resultado(texto);
}

}  // namespace

void declararImagenes(Argumentos& argumentos, ContextoHistorico& contexto) {
    auto orden = argumentos.orden("imagenes", "Muestra las imágenes que hay");
    const auto opciones = std::make_shared<OpcionesImagenes>();
    orden.opcion(opciones->estacion,
                 {.nombre = "--estacion", .valor = "CIFRAS", .ayuda = "Solo las de esta estación"});
    orden.bandera(opciones->json, "--json", "Un objeto JSON por imagen");
    orden.alElegir(
        [&contexto, opciones] { contexto.orden = [&contexto, opciones] { imagenes(contexto, *opciones); }; });
}

}  // namespace telvane
