// telvane-historico copiar
#include <memory>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "consola/codigos_salida.h"
#include "historico/ordenes.h"

namespace telvane {

namespace {

constexpr const char* kHayPerdido = "en el archivo de origen falta lo dicho, y no se copió";

struct OpcionesCopiar {
    std::string destino;
    std::optional<std::string> estacion;
};

// Without an image no archive is made.
bool hayQueCopiar(Almacen& origen, const std::optional<std::string>& cual) {
    Lectura lectura(origen);
    if (cual) return lectura.estacion(*cual).resumen.imagenes > 0;
    return !lectura.estaciones().empty();
}

// A name of something else is as wrong here as for any other output.
std::unique_ptr<Almacen> abrirDestino(const ContextoHistorico& contexto, const std::string& destino) {
    try {
        return contexto.abrir(destino, Uso::incorporar);
    } catch (const ErrorAlmacen& error) {
        if (error.clase() != ErrorAlmacen::Clase::ajeno) throw;
        throw ErrorCli(CodigoSalida::malUso, error.what());
    }
}

// sinCopiar: of how many images it failed. perdido: what nobody can copy any more.
void terminar(Consola& consola, std::size_t copiadas, std::size_t sinCopiar,
              const std::vector<std::string>& perdido) {
    for (const auto& linea : perdido) consola.aviso(linea);
    Relato relato(consola);
    relato.decir(fmt::format("Imágenes copiadas: {}\n", copiadas));
    std::string mal = sinCopiar == 0 ? "" : fmt::format("imágenes sin copiar: {}", sinCopiar);
    if (mal.empty() && !perdido.empty()) mal = kHayPerdido;
    relato.terminar(mal, fmt::format("imágenes copiadas: {}, ya están en el otro archivo", copiadas));
}

void copiar(ContextoHistorico& contexto, const OpcionesCopiar& opciones) {
    const auto origen = contexto.abrir(Uso::leer);
    Archivo suyo(*origen);
    const auto perdido = suyo.loQueSePerdio(opciones.estacion);
    if (!hayQueCopiar(*origen, opciones.estacion)) {
        terminar(contexto.consola, 0, 0, perdido);
        return;
    }
    const auto destino = abrirDestino(contexto, opciones.destino);
    const auto copia = Archivo(*destino).copiarDe(suyo, opciones.estacion, [&] { contexto.atender(); });
    for (const auto& fallo : copia.fallos) contexto.consola.aviso(fallo);
    for (const auto& estacion : copia.contradichas) {
        contexto.consola.aviso(
            fmt::format("estación {}: las imágenes copiadas contradicen a otras suyas: parecen de dos "
                        "registradores con el mismo "
                        "número de serie; donde se incorporan, dé uno de ellos a otra estación con --como "
                        "NOMBRE, y cópielos a un "
                        "archivo nuevo; si alguien atrasó el reloj, está bien",
                        estacion));
    }
    terminar(contexto.consola, copia.copiadas, copia.fallos.size(), perdido);
}

}  // namespace

void declararCopiar(Argumentos& argumentos, ContextoHistorico& contexto) {
    auto orden = argumentos.orden("copiar", "Copia a otro archivo histórico las imágenes que le faltan");
    const auto opciones = std::make_shared<OpcionesCopiar>();
    orden.opcion(opciones->destino, {.nombre = "--a",
                                     .valor = "DESTINO",
                                     .ayuda = "El otro: un archivo SQLite, o postgresql://…",
                                     .comprobar = motivoDestino,
                                     .obligatoria = true});
    orden.opcion(opciones->estacion,
                 {.nombre = "--estacion", .valor = "CIFRAS", .ayuda = "Solo las de esta estación"});
    orden.alElegir(
        [&contexto, opciones] { contexto.orden = [&contexto, opciones] { copiar(contexto, *opciones); }; });
}

}  // namespace telvane
