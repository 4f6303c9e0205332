#include "historico/aplicacion.h"

#include <filesystem>

#include <fmt/format.h>

#include "consola/codigos_salida.h"
#include "data/archivo_base.h"
#include "platform/archivo.h"

namespace telvane {

std::unique_ptr<Almacen> ContextoHistorico::abrir(Uso uso) const {
    if (!en && uso == Uso::incorporar) {
        std::filesystem::create_directories(std::filesystem::path(destinoPorDefecto()).parent_path());
    }
    return abrir(en ? *en : destinoPorDefecto(), uso);
}

// A shell may have emptied it for the output: it is known by its name too.
std::unique_ptr<Almacen> ContextoHistorico::abrir(const std::string& destino, Uso uso) const {
    ArchivosLeidos suyo;
    suyo.agregar(std::filesystem::path(destino));
    consola.exigirFlujosLibres({.leidos = suyo});
    return abrirAlmacen(destino, uso, entorno.paciencia, [this] { atender(); });
}

SalidaConsola ContextoHistorico::salida(const std::string& ruta, ReglaDestino regla, const Almacen* almacen,
                                        const std::optional<std::string>& limites) const {
    if (almacen != nullptr) {
        for (const auto& suyo : almacen->archivos()) regla.leidos.agregar(suyo);
        if (const auto alLado = almacen->limitesAlLado(); !alLado.empty()) regla.leidos.agregar(alLado);
    }
    if (limites) apuntarLeido(regla.leidos, *limites);
    return {ruta, std::move(regla)};
}

std::vector<std::uint8_t> ContextoHistorico::leer(const std::string& archivo, std::size_t maximo) const {
    exigirFlujosLibres({archivo});
    return esEntradaEstandar(archivo) ? consola.leerEntrada(maximo) : leerArchivo(archivo, maximo);
}

void ContextoHistorico::apuntarLeido(ArchivosLeidos& leidos, const std::string& archivo) const {
    esEntradaEstandar(archivo) ? leidos.agregar(entorno.entrada)
                               : leidos.agregar(std::filesystem::path(archivo));
}

void ContextoHistorico::exigirFlujosLibres(const std::vector<std::string>& leidos) const {
    ArchivosLeidos todos;
    for (const auto& archivo : leidos) apuntarLeido(todos, archivo);
    consola.exigirFlujosLibres({.leidos = todos});
}

void ContextoHistorico::atender() const {
    atenderSenalSinBucle(entorno);
}

void Relato::decir(std::string_view texto) {
    if (!motivo_.empty()) return;
    try {
        consola_.resultado(texto);
    } catch (const ErrorCli& error) {
        if (error.codigo() != CodigoSalida::fallo) throw;
        motivo_ = error.what();
    }
}

void Relato::terminar(std::string fallo, std::string_view hecho) const {
    if (!motivo_.empty())
        fallo +=
            fmt::format("{}{}{}{}", fallo.empty() ? "" : "; ", motivo_, hecho.empty() ? "" : "; ", hecho);
    if (!fallo.empty()) throw ErrorCli(CodigoSalida::fallo, fallo);
}

void declararOrdenes(Argumentos& argumentos, ContextoHistorico& contexto) {
    argumentos.programa().opcion(
        contexto.en,
        {.nombre = "--en",
         .valor = "DESTINO",
         .ayuda = "El archivo histórico: un archivo SQLite, o postgresql://…; si falta, el del usuario",
         .comprobar = motivoDestino});
    declararIncorporar(argumentos, contexto);
    declararEstado(argumentos, contexto);
    declararExportar(argumentos, contexto);
    declararImagenes(argumentos, contexto);
    declararImagen(argumentos, contexto);
    declararComprobar(argumentos, contexto);
    declararRehacer(argumentos, contexto);
    declararCopiar(argumentos, contexto);
    declararInforme(argumentos, contexto);
    declararResumen(argumentos, contexto);
    argumentos.programa().pie("Códigos de salida: 0 hecho, 1 fallo, 2 mal uso, 130 interrumpido.");
}

int correrHistorico(const std::vector<std::string>& argumentos, EntornoHistorico& entorno) {
    Consola consola(entorno);
    ContextoHistorico contexto{.entorno = entorno, .consola = consola, .en = {}, .orden = {}};
    const ProgramaConsola programa{
        .nombre = "telvane-historico",
        .version = TELVANE_VERSION,
        .descripcion = "El archivo histórico: las imágenes de muchas descargas y estaciones, durante años",
        .flujos = reglaDeFlujos()};
    return correrPrograma(programa, consola, argumentos, contexto.orden,
                          [&](Argumentos& linea) { declararOrdenes(linea, contexto); });
}

}  // namespace telvane
