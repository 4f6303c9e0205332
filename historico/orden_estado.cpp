// telvane-historico estado
#include <charconv>
#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "consola/codigos_salida.h"
#include "data/archivo_base.h"
#include "historico/ordenes.h"
#include "historico/textos_historico.h"

namespace telvane {

namespace {

struct Opciones {
    bool json = false;
    std::optional<std::string> silencio;    // hours
    std::optional<std::string> prometheus;  // file
};

std::optional<double> leerHoras(const std::string& texto) {
    double horas = 0;
    const auto [fin, error] = std::from_chars(texto.data(), texto.data() + texto.size(), horas);
    const bool bien =
        error == std::errc() && fin == texto.data() + texto.size() && std::isfinite(horas) && horas >= 0;
    return bien ? std::optional(horas) : std::nullopt;
}
std::string motivoHoras(const std::string& texto) {
    return leerHoras(texto) ? "" : "debe ser un número de horas";
}

nlohmann::ordered_json momentoONulo(const std::optional<Instante>& instante) {
    return instante ? nlohmann::ordered_json(isoDe(*instante)) : nlohmann::ordered_json();
}

std::string enJson(const std::vector<EstacionGuardada>& estaciones) {
    nlohmann::ordered_json lista = nlohmann::ordered_json::array();
    for (const auto& e : estaciones) {
        const auto datos = datosDe(e);
        nlohmann::ordered_json json;
        json["serie"] = e.nombre;
        json["ubicacion"] = datos.ubicacion;
        json["usuario"] = datos.usuario;
        json["intervalo"] =
            datos.intervalo ? nlohmann::ordered_json(*datos.intervalo) : nlohmann::ordered_json();
        json["muestras"] = e.resumen.muestras;
        json["desde"] = momentoONulo(e.resumen.desde);
        json["hasta"] = momentoONulo(e.resumen.hasta);
        json["imagenes"] = e.resumen.imagenes;
        json["huecos"] = e.resumen.huecos;
        json["conflictos"] = e.resumen.conflictos;
        json["incorporada"] = isoDe(e.resumen.incorporada);
        lista.push_back(std::move(json));
    }
    const nlohmann::ordered_json todo{{"estaciones", std::move(lista)}};
    return todo.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

std::string paraPersonas(const std::vector<EstacionGuardada>& estaciones) {
    if (estaciones.empty()) return "No hay ninguna estación en el archivo.\n";
    std::string texto;
    for (const auto& e : estaciones) {
        const auto datos = datosDe(e);
        const auto& r = e.resumen;
        if (!texto.empty()) texto += '\n';
        texto += fmt::format("Estación {}\n  Ubicación:   {}\n  Usuario:     {}\n", e.nombre, datos.ubicacion,
                             datos.usuario);
        texto += datos.intervalo ? fmt::format("  Intervalo:   {} minutos\n", *datos.intervalo)
                                 : std::string("  Intervalo:   desconocido\n");
        texto += fmt::format("  Muestras:    {}\n", r.muestras);
        if (r.desde)
            texto += fmt::format("  Desde:       {}\n  Hasta:       {}\n", isoDe(*r.desde), isoDe(*r.hasta));
        texto += fmt::format("  Imágenes:    {}\n  Huecos:      {}\n  Conflictos:  {}\n  Incorporada: {}\n",
                             r.imagenes, r.huecos, r.conflictos, isoDe(r.incorporada));
    }
    return texto;
}

// A label's value as the exposition format has it.
std::string etiqueta(const std::string& texto) {
    std::string valor;
    for (const char c : texto) {
        if (c == '\\' || c == '"') valor += '\\';
        valor += c;
    }
    return valor;
}

std::optional<std::int64_t> segundosDe(const std::optional<Instante>& instante) {
    return instante ? std::optional<std::int64_t>(instante->time_since_epoch().count()) : std::nullopt;
}

std::string paraPrometheus(const std::vector<EstacionGuardada>& estaciones) {
    struct Medida {
        std::string_view nombre;
        std::string_view ayuda;
        std::optional<std::int64_t> (*valor)(const EstacionGuardada&);
    };
    using E = const EstacionGuardada&;
    using V = std::optional<std::int64_t>;
    static constexpr Medida kMedidas[] = {
        {.nombre = "muestras",
         .ayuda = "Samples that count",
         .valor = [](E e) -> V { return e.resumen.muestras; }},
        {.nombre = "imagenes",
         .ayuda = "Memory images",
         .valor = [](E e) -> V { return e.resumen.imagenes; }},
        {.nombre = "huecos",
         .ayuda = "Gaps among the stamps",
         .valor = [](E e) -> V { return e.resumen.huecos; }},
        {.nombre = "conflictos",
         .ayuda = "Stamps in conflict",
         .valor = [](E e) -> V { return e.resumen.conflictos; }},
        {.nombre = "intervalo_minutos",
         .ayuda = "Sampling interval of the newest image",
         .valor = [](E e) -> V {
             const auto intervalo = datosDe(e).intervalo;
             return intervalo ? V(*intervalo) : V();
         }},
        {.nombre = "incorporada_segundos",
         .ayuda = "When the last image was taken, seconds since 1970 UTC",
         .valor = [](E e) -> V { return e.resumen.incorporada.time_since_epoch().count(); }},
        {.nombre = "desde_segundos",
         .ayuda = "First stamp, local time of the logger as seconds since 1970",
         .valor = [](E e) { return segundosDe(e.resumen.desde); }},
        {.nombre = "hasta_segundos",
         .ayuda = "Last stamp, local time of the logger as seconds since 1970",
         .valor = [](E e) { return segundosDe(e.resumen.hasta); }},
    };
    std::string texto;
    for (const auto& [nombre, ayuda, valor] : kMedidas) {
        texto += fmt::format("# HELP telvane_historico_{0} {1}\n# TYPE telvane_historico_{0} gauge\n", nombre,
                             ayuda);
        for (const auto& e : estaciones) {
            const V cuanto = valor(e);
            if (!cuanto) continue;
            texto += fmt::format("telvane_historico_{}{{serie=\"{}\",ubicacion=\"{}\"}} {}\n", nombre,
                                 etiqueta(e.nombre), etiqueta(datosDe(e).ubicacion), *cuanto);
        }
    }
    return texto;
}

// Stations whose last image is older than that are told; how many there are.
std::size_t decirSilenciosas(ContextoHistorico& contexto, const std::vector<EstacionGuardada>& estaciones,
                             double horas) {
    std::size_t cuantas = 0;
    const auto ahora = contexto.entorno.ahora();
    for (const auto& e : estaciones) {
        const std::chrono::duration<double, std::ratio<3600>> hace = ahora - e.resumen.incorporada;
        if (hace.count() <= horas) continue;
        contexto.consola.aviso(
            fmt::format("estación {}: sin imágenes desde hace {:.0f} horas, la última es de {}", e.nombre,
                        hace.count(), isoDe(e.resumen.incorporada)));
        ++cuantas;
    }
    return cuantas;
}

void estado(ContextoHistorico& contexto, const Opciones& opciones) {
    std::vector<EstacionGuardada> estaciones;
    std::optional<SalidaConsola> prometheus;
    {
        const auto almacen = contexto.abrir(Uso::leer);
        if (opciones.prometheus) {
            prometheus = ContextoHistorico::salida(*opciones.prometheus, reglaDeTabla(), almacen.get());
        }
        estaciones = Lectura(*almacen).estaciones();
    }
    if (prometheus) prometheus->escribir(contexto.entorno, contexto.consola, paraPrometheus(estaciones));
    if (opciones.json) {
        contexto.consola.resultado(enJson(estaciones));
    } else if (!opciones.prometheus) {
        contexto.consola.resultado(paraPersonas(estaciones));
    }
    if (!opciones.silencio) return;
    const auto calladas = decirSilenciosas(contexto, estaciones, leerHoras(*opciones.silencio).value_or(0));
    if (calladas > 0)
        throw ErrorCli(CodigoSalida::fallo, fmt::format("estaciones en silencio: {}", calladas));
}

}  // namespace

void declararEstado(Argumentos& argumentos, ContextoHistorico& contexto) {
    auto orden = argumentos.orden("estado", "Muestra qué hay de cada estación");
    const auto opciones = std::make_shared<Opciones>();
    orden.bandera(opciones->json, "--json", "Como objeto JSON");
    orden.opcion(opciones->silencio, {.nombre = "--silencio",
                                      .valor = "HORAS",
                                      .ayuda = "Sale con 1 si una estación lleva más sin una imagen",
                                      .comprobar = motivoHoras});
    orden.opcion(opciones->prometheus, {.nombre = "--prometheus",
                                        .valor = "ARCHIVO",
                                        .ayuda = "Lo escribe para la carpeta de un node exporter"});
    orden.alElegir(
        [&contexto, opciones] { contexto.orden = [&contexto, opciones] { estado(contexto, *opciones); }; });
}

}  // namespace telvane
