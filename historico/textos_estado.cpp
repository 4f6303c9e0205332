#include "historico/textos_estado.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>

#include <fmt/format.h>

#include "consola/json.h"
#include "historico/textos_historico.h"
#include "platform/contados.h"

namespace telvane {

namespace {

Json momentoONulo(const std::optional<Instante>& instante) {
    return instante ? Json(isoDe(*instante)) : Json();
}

Json objeto(const EstadoEstacion& estado) {
    const auto& e = estado.observada.estacion;
    const auto datos = datosDe(e);
    Json json;
    json.poner("serie", e.nombre);
    json.poner("ubicacion", datos.ubicacion);
    json.poner("usuario", datos.usuario);
    json.poner("intervalo", datos.intervalo);
    json.poner("muestras", e.resumen.muestras);
    json.poner("desde", momentoONulo(e.resumen.desde));
    json.poner("hasta", momentoONulo(e.resumen.hasta));
    json.poner("imagenes", e.resumen.imagenes);
    json.poner("huecos", e.resumen.huecos);
    json.poner("conflictos", e.resumen.conflictos);
    json.poner("incorporada", isoDe(e.resumen.incorporada));
    auto avisos = Json::lista();
    for (const auto& aviso : estado.avisos) {
        Json uno;
        uno.poner("codigo", codigoDe(aviso.clase));
        uno.poner("texto", aviso.texto);
        avisos.agregar(std::move(uno));
    }
    json.poner("avisos", std::move(avisos));
    return json;
}

// A label's value as the exposition format has it.
std::string etiqueta(const std::string& texto) {
    std::string valor;
    for (const char c : texto) {
        if (c == '\\' || c == '"') valor += '\\';
        if (c == '\n') {
            valor += "\\n";
        } else {
            valor += c;
        }
    }
    return valor;
}

std::optional<std::int64_t> segundosDe(const std::optional<Instante>& instante) {
    return instante ? std::optional<std::int64_t>(instante->time_since_epoch().count()) : std::nullopt;
}

using Valor = std::optional<std::int64_t>;

struct Medida {
    std::string_view nombre;
    std::string_view ayuda;
    Valor (*valor)(const EstadoEstacion&, const DatosDeEstacion&);
};

Valor desfaseDe(const Observada& o) {
    const auto llegada = std::find_if(o.ultimas.rbegin(), o.ultimas.rend(),
                                      [](const Llegada& una) { return una.descarga.has_value(); });
    return llegada == o.ultimas.rend() ? std::nullopt : Valor(llegada->descarga->desfase);
}

std::optional<PronosticoMemoria> pronosticoDe(const Observada& o, const DatosDeEstacion& datos) {
    if (!datos.intervalo) return std::nullopt;
    return pronosticar(o.ultimas, std::chrono::minutes(*datos.intervalo));
}

const ResumenEstacion& resumenDe(const EstadoEstacion& e) {
    return e.observada.estacion.resumen;
}

using E = const EstadoEstacion&;
using D = const DatosDeEstacion&;
constexpr std::array kMedidas = {
    Medida{.nombre = "muestras",
           .ayuda = "Muestras que cuentan",
           .valor = [](E e, D) -> Valor { return resumenDe(e).muestras; }},
    Medida{.nombre = "imagenes",
           .ayuda = "Imágenes de la memoria",
           .valor = [](E e, D) -> Valor { return resumenDe(e).imagenes; }},
    Medida{.nombre = "huecos",
           .ayuda = "Huecos entre las muestras",
           .valor = [](E e, D) -> Valor { return resumenDe(e).huecos; }},
    Medida{.nombre = "conflictos",
           .ayuda = "Horas con muestras en conflicto",
           .valor = [](E e, D) -> Valor { return resumenDe(e).conflictos; }},
    Medida{.nombre = "intervalo_minutos",
           .ayuda = "Intervalo de muestreo de la imagen más nueva, en minutos",
           .valor = [](E, D d) -> Valor { return d.intervalo ? Valor(*d.intervalo) : Valor(); }},
    Medida{.nombre = "incorporada_segundos",
           .ayuda = "Cuándo se incorporó la última imagen, en segundos desde 1970 UTC",
           .valor = [](E e, D) -> Valor { return resumenDe(e).incorporada.time_since_epoch().count(); }},
    Medida{.nombre = "desde_segundos",
           .ayuda = "Primera muestra, en la hora del registrador, en segundos desde 1970",
           .valor = [](E e, D) { return segundosDe(resumenDe(e).desde); }},
    Medida{.nombre = "hasta_segundos",
           .ayuda = "Última muestra, en la hora del registrador, en segundos desde 1970",
           .valor = [](E e, D) { return segundosDe(resumenDe(e).hasta); }},
    Medida{.nombre = "desfase_segundos",
           .ayuda = "Reloj del registrador menos el del equipo que lo descargó por última vez, en segundos",
           .valor = [](E e, D) { return desfaseDe(e.observada); }},
    Medida{.nombre = "memoria_libre_muestras",
           .ayuda = "Muestras que aún caben en la memoria, según su última imagen entera",
           .valor = [](E e, D d) -> Valor {
               const auto p = pronosticoDe(e.observada, d);
               return p ? Valor(p->libres) : Valor();
           }},
    Medida{.nombre = "memoria_plazo_segundos",
           .ayuda = "Cuánto aguanta la memoria sin una descarga desde la última muestra, en segundos",
           .valor = [](E e, D d) -> Valor {
               const auto p = pronosticoDe(e.observada, d);
               return p ? Valor(std::chrono::seconds(p->plazo).count()) : Valor();
           }},
    Medida{.nombre = "sin_copiar_imagenes",
           .ayuda = "Imágenes que le faltan al otro archivo histórico",
           .valor = [](E e, D) { return e.observada.sinCopiar; }},
};

// Of a station with a label more: which one.
constexpr Medida kAviso = {
    .nombre = "aviso", .ayuda = "Si la estación tiene este aviso: 1 si lo tiene, 0 si no", .valor = nullptr};

void encabezar(std::string& texto, std::string_view nombre, std::string_view ayuda) {
    texto +=
        fmt::format("# HELP telvane_historico_{0} {1}\n# TYPE telvane_historico_{0} gauge\n", nombre, ayuda);
}

bool avisa(const EstadoEstacion& estado, ClaseAviso clase) {
    return std::ranges::any_of(estado.avisos,
                               [&](const AvisoEstacion& aviso) { return aviso.clase == clase; });
}

}  // namespace

std::string estadoJson(const std::vector<EstadoEstacion>& estaciones) {
    auto lista = Json::lista();
    for (const auto& estado : estaciones) lista.agregar(objeto(estado));
    Json json;
    json.poner("estaciones", std::move(lista));
    return json.conSangria();
}

std::string estadoParaPersonas(const std::vector<EstadoEstacion>& estaciones) {
    if (estaciones.empty()) return "No hay ninguna estación en el archivo.\n";
    std::string texto;
    for (const auto& estado : estaciones) {
        const auto& e = estado.observada.estacion;
        const auto datos = datosDe(e);
        const auto& r = e.resumen;
        if (!texto.empty()) texto += '\n';
        texto += fmt::format("Estación {}\n  Ubicación:   {}\n  Usuario:     {}\n", e.nombre, datos.ubicacion,
                             datos.usuario);
        texto += datos.intervalo
                     ? fmt::format("  Intervalo:   {}\n", contados(*datos.intervalo, "minuto", "minutos"))
                     : std::string("  Intervalo:   desconocido\n");
        texto += fmt::format("  Muestras:    {}\n", r.muestras);
        if (r.desde)
            texto += fmt::format("  Desde:       {}\n  Hasta:       {}\n", isoDe(*r.desde), isoDe(*r.hasta));
        texto += fmt::format("  Imágenes:    {}\n  Huecos:      {}\n  Conflictos:  {}\n  Incorporada: {}\n",
                             r.imagenes, r.huecos, r.conflictos, isoDe(r.incorporada));
        for (const auto& aviso : estado.avisos)
            texto += fmt::format("  Aviso:       {} ({})\n", aviso.texto, codigoDe(aviso.clase));
    }
    return texto;
}

std::string estadoPrometheus(const std::vector<EstadoEstacion>& estaciones) {
    std::vector<DatosDeEstacion> datos;
    std::vector<std::string> etiquetas;
    for (const auto& estado : estaciones) {
        const auto& e = estado.observada.estacion;
        datos.push_back(datosDe(e));
        etiquetas.push_back(fmt::format(R"(serie="{}",ubicacion="{}")", etiqueta(e.nombre),
                                        etiqueta(datos.back().ubicacion)));
    }
    std::string texto;
    for (const auto& [nombre, ayuda, valor] : kMedidas) {
        encabezar(texto, nombre, ayuda);
        for (std::size_t i = 0; i < estaciones.size(); ++i) {
            const auto cuanto = valor(estaciones[i], datos[i]);
            if (cuanto)
                texto += fmt::format("telvane_historico_{}{{{}}} {}\n", nombre, etiquetas[i], *cuanto);
        }
    }
    encabezar(texto, kAviso.nombre, kAviso.ayuda);
    for (std::size_t i = 0; i < estaciones.size(); ++i) {
        for (const auto& [clase, codigo] : kCodigosAviso) {
            texto += fmt::format("telvane_historico_aviso{{{},codigo=\"{}\"}} {}\n", etiquetas[i], codigo,
                                 avisa(estaciones[i], clase) ? 1 : 0);
        }
    }
    return texto;
}

}  // namespace telvane
