// telvane-historico estado
#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "consola/codigos_salida.h"
#include "data/archivo_base.h"
#include "historico/observacion.h"
#include "historico/ordenes.h"
#include "historico/textos_estado.h"
#include "historico/textos_historico.h"
#include "platform/numero.h"

namespace telvane {

namespace {

struct OpcionesEstado {
    bool json = false;
    bool avisos = false;
    std::optional<std::string> silencio;    // hours
    std::optional<std::string> prometheus;  // file
    std::optional<std::string> copia;       // the archive they are copied to
};

std::optional<double> leerHoras(const std::string& texto) {
    const auto horas = numeroDe<double>(texto);
    return horas && std::isfinite(*horas) && *horas >= 0 ? horas : std::nullopt;
}
std::string motivoHoras(const std::string& texto) {
    return leerHoras(texto) ? "" : "debe ser un número de horas";
}

struct EstadoVisto {
    std::vector<EstadoEstacion> estaciones;
    // Why nothing is known of the other archive; empty: it is, or nobody asked.
    std::string sinCopia;
};

EstadoVisto mirar(ContextoHistorico& contexto, Almacen& almacen, const OpcionesEstado& opciones) {
    Lectura lectura(almacen);
    Mirada mirada{.ahora = contexto.entorno.ahora(), .horasDeSilencio = {}, .copia = {}};
    auto flota = observar(lectura, mirada.ahora);
    if (opciones.silencio) mirada.horasDeSilencio = leerHoras(*opciones.silencio);
    EstadoVisto visto;
    if (opciones.copia) {
        try {
            const auto otro = contexto.abrir(*opciones.copia, Uso::leer);
            mirada.copia = otro->nombre();
            Lectura suya(*otro);
            compararCon(flota, lectura, suya);
        } catch (const ErrorAlmacen& error) {
            // What is known of the stations does not hang on it.
            visto.sinCopia = error.what();
        }
    }
    auto avisos = avisosDe(flota, mirada);
    for (std::size_t i = 0; i < flota.size(); ++i)
        visto.estaciones.push_back({std::move(flota[i]), std::move(avisos[i])});
    return visto;
}

// A line for each; how many they are. soloSilencio: of the others nobody asked.
std::size_t decirAvisos(Consola& consola, const std::vector<EstadoEstacion>& estaciones, bool soloSilencio) {
    std::size_t cuantos = 0;
    for (const auto& estado : estaciones) {
        for (const auto& aviso : estado.avisos) {
            if (soloSilencio && aviso.clase != ClaseAviso::silencio) continue;
            consola.aviso(fmt::format("estación {}: {}", estado.observada.estacion.nombre, aviso.texto));
            ++cuantos;
        }
    }
    return cuantos;
}

void estado(ContextoHistorico& contexto, const OpcionesEstado& opciones) {
    EstadoVisto visto;
    std::optional<SalidaConsola> prometheus;
    {
        const auto almacen = contexto.abrir(Uso::leer);
        if (opciones.prometheus) {
            prometheus = contexto.salida(*opciones.prometheus, reglaDeTabla(), almacen.get());
        }
        visto = mirar(contexto, *almacen, opciones);
    }
    const auto& estaciones = visto.estaciones;
    if (prometheus) prometheus->escribir(contexto.entorno, contexto.consola, estadoPrometheus(estaciones));
    if (opciones.json) {
        contexto.consola.resultado(estadoJson(estaciones));
    } else if (!opciones.prometheus) {
        contexto.consola.resultado(estadoParaPersonas(estaciones));
    }
    const bool seDicen = opciones.silencio || opciones.avisos;
    const auto cuantos = seDicen ? decirAvisos(contexto.consola, estaciones, !opciones.avisos) : 0;
    if (!visto.sinCopia.empty()) throw ErrorCli(CodigoSalida::fallo, visto.sinCopia);
    if (cuantos == 0) return;
    throw ErrorCli(CodigoSalida::fallo,
                   fmt::format("{}: {}", opciones.avisos ? "avisos" : "estaciones en silencio", cuantos));
}

}  // namespace

void declararEstado(Argumentos& argumentos, ContextoHistorico& contexto) {
    auto orden = argumentos.orden("estado", "Muestra qué hay de cada estación, y de qué se avisa");
    const auto opciones = std::make_shared<OpcionesEstado>();
    orden.bandera(opciones->json, "--json", "Como objeto JSON");
    orden.bandera(opciones->avisos, "--avisos", "Sale con 1 si hay algún aviso, y los dice");
    orden.opcion(opciones->silencio, {.nombre = "--silencio",
                                      .valor = "HORAS",
                                      .ayuda = "Sale con 1 si una estación lleva más sin una imagen",
                                      .comprobar = motivoHoras});
    orden.opcion(opciones->copia, {.nombre = "--copia",
                                   .valor = "DESTINO",
                                   .ayuda = "Avisa de las imágenes que no están en ese archivo histórico",
                                   .comprobar = motivoDestino});
    orden.opcion(opciones->prometheus, {.nombre = "--prometheus",
                                        .valor = "ARCHIVO",
                                        .ayuda = "Lo escribe para la carpeta de un node exporter"});
    orden.alElegir([&contexto, opciones] {
        exigirUso(!(opciones->json && opciones->prometheus && esSalidaEstandar(*opciones->prometheus)),
                  "solo uno de --json y --prometheus puede ir a la salida: dé un archivo a --prometheus");
        contexto.orden = [&contexto, opciones] { estado(contexto, *opciones); };
    });
}

}  // namespace telvane
