// telvane-cli convertir
#include <algorithm>
#include <filesystem>
#include <memory>
#include <set>
#include <span>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "cli/conversion_cli.h"
#include "cli/ordenes.h"
#include "cli/tanda_de_imagenes.h"
#include "consola/codigos_salida.h"
#include "consola/salida_consola.h"
#include "data/archivo_base.h"
#include "data/conversion.h"
#include "data/sello.h"
#include "loggerconfig/pasos_serie.h"
#include "platform/archivo.h"
#include "platform/motivos.h"
#include "platform/texto_visible.h"

namespace telvane {

namespace {

namespace fs = std::filesystem;

struct OpcionesConvertir {
    std::vector<std::string> archivos;
    std::string carpeta;
    std::string formato;
    std::string serie;
    std::string perfil = "estricto";
};

using Par = TandaDeImagenes::Par;

// As asked for, or as the output's name tells.
Formato formatoDe(const OpcionesConvertir& opciones) {
    if (!opciones.formato.empty()) return leerFormato(opciones.formato).value();
    if (!opciones.carpeta.empty()) return Formato::csv;
    return formatoDelNombre(opciones.archivos.back()).value_or(Formato::csv);
}

std::vector<Par> pares(const OpcionesConvertir& opciones, Formato formato) {
    if (opciones.carpeta.empty()) {
        exigirUso(opciones.archivos.size() == 2,
                  "se esperan ENTRADA y SALIDA, o --en CARPETA y las entradas");
        return {{opciones.archivos[0], opciones.archivos[1]}};
    }
    std::vector<Par> lista;
    for (const auto& entrada : opciones.archivos) {
        exigirUso(!esEntradaEstandar(entrada), "--en no admite la entrada -");
        auto salida = fs::path(opciones.carpeta) / fs::path(entrada).stem();
        salida += fila(formato).extension;
        lista.push_back({entrada, salida.string()});
    }
    return lista;
}

// What the outputs do not replace.
ArchivosLeidos entradasDe(const EntornoConsola& entorno, const std::vector<Par>& lista) {
    ArchivosLeidos entradas;
    for (const auto& par : lista)
        esEntradaEstandar(par.entrada) ? entradas.agregar(entorno.entrada)
                                       : entradas.agregar(fs::path(par.entrada));
    return entradas;
}

// All of them before the first is written: no output is one of the inputs, or another output, by any name.
void revisarJuntas(const EntornoConsola& entorno, Consola& consola, const std::vector<Par>& lista) {
    const auto entradas = entradasDe(entorno, lista);
    consola.exigirFlujosLibres({.leidos = entradas});
    std::set<std::string> salidas;
    for (const auto& par : lista) {
        exigirQueNoSeLea(entorno, par.salida, entradas);
        exigirUso(salidas.insert(identidad(fs::path(par.salida))).second,
                  fmt::format("dos entradas darían {}: conviértalas por separado, cada una con su SALIDA",
                              nombreVisible(par.salida)));
    }
}

std::size_t leerTuberia(Consola& consola, std::span<std::uint8_t> destino) {
    const auto imagen = consola.leerEntrada(destino.size());
    std::copy(imagen.begin(), imagen.end(), destino.begin());
    return imagen.size();
}

Convertido convertirDe(Conversor& conversor, const TrabajoDeConversion& trabajo, std::size_t bytes,
                       const std::string& entrada) {
    const auto nombre = esEntradaEstandar(entrada) ? std::string("la entrada") : nombreVisible(entrada);
    try {
        return convertirImagen(conversor, trabajo, bytes, nombre);
    } catch (const ErrorCli& error) {
        throw ErrorCli(error.codigo(), fmt::format("{}: {}", nombre, error.what()));
    }
}

void convertirUna(ContextoCli& contexto, const TrabajoDeConversion& trabajo, const Par& par) {
    const SalidaConsola salida(par.salida, reglaDeTabla());
    if (salida.estandar()) contexto.consola.exigirSalidaPropia();
    Conversor conversor;
    const auto bytes = esEntradaEstandar(par.entrada) ? leerTuberia(contexto.consola, conversor.destino())
                                                      : leerArchivo(par.entrada, conversor.destino());
    const auto convertido = convertirDe(conversor, trabajo, bytes, par.entrada);
    salida.escribir(contexto.entorno, contexto.consola, convertido.archivo.bytes());
    contexto.consola.aviso(convertido.aviso);
}

void convertir(ContextoCli& contexto, const OpcionesConvertir& opciones) {
    TrabajoDeConversion trabajo{.formato = formatoDe(opciones),
                                .perfil = leerPerfil(opciones.perfil),
                                .origen = {},
                                .momento = contexto.entorno.reloj.ahora()};
    if (!opciones.serie.empty()) trabajo.origen.serie = opciones.serie;
    const auto lista = pares(opciones, trabajo.formato);
    revisarJuntas(contexto.entorno, contexto.consola, lista);
    if (opciones.carpeta.empty()) {
        convertirUna(contexto, trabajo, lista.front());
        return;
    }
    if (!fs::is_directory(opciones.carpeta))
        throw ErrorCli(CodigoSalida::fallo, motivoSinCarpeta(opciones.carpeta));
    const auto fallidas = TandaDeImagenes(contexto.entorno, contexto.consola, trabajo, lista).correr();
    if (fallidas > 0) {
        throw ErrorCli(CodigoSalida::fallo,
                       fmt::format("{} de {} archivos sin convertir", fallidas, lista.size()));
    }
}

}  // namespace

void declararConvertir(Argumentos& argumentos, ContextoCli& contexto) {
    auto orden = argumentos.orden("convertir", "Convierte archivos base (.rgt) sin el registrador");
    const auto opciones = std::make_shared<OpcionesConvertir>();
    orden.opcion(opciones->archivos,
                 {.nombre = "ARCHIVO",
                  .valor = "",
                  .ayuda = "ENTRADA SALIDA; con --en, todas las entradas. - es la tubería",
                  .obligatoria = true});
    orden.opcion(opciones->carpeta,
                 {.nombre = "--en",
                  .valor = "CARPETA",
                  .ayuda = "Carpeta de las salidas, cada una con el nombre de su entrada"});
    orden.opcion(opciones->formato, {.nombre = "--formato",
                                     .valor = "FORMATO",
                                     .ayuda = nombresDeFormatos() + "; si falta, el de la SALIDA, o csv",
                                     .comprobar = motivoFormato});
    orden.opcion(opciones->serie, {.nombre = "--serie",
                                   .valor = "CIFRAS",
                                   .ayuda = "Número de serie, 8 cifras; si falta, el de la imagen",
                                   .comprobar = motivoSerieMostrada});
    orden.opcion(opciones->perfil,
                 {.nombre = "--perfil",
                  .valor = "PERFIL",
                  .ayuda = fmt::format("Fechas que valen: estricto (2001 a 2019) o ampliado; {} si falta",
                                       opciones->perfil),
                  .comprobar = motivoPerfil});
    orden.alElegir([&contexto, opciones] {
        contexto.orden = [&contexto, opciones] { convertir(contexto, *opciones); };
    });
}

}  // namespace telvane
