// telvane-historico exportar
#include <filesystem>
#include <memory>
#include <string>

#include <fmt/format.h>

#include "calidad/limites_por_estacion.h"
#include "consola/codigos_salida.h"
#include "data/archivo_base.h"
#include "historico/exportacion_archivo.h"
#include "historico/ordenes.h"
#include "historico/textos_historico.h"
#include "platform/texto_visible.h"

namespace telvane {

namespace {

struct OpcionesExportar {
    std::string salida;
    std::string estacion;
    std::optional<std::string> desde;
    std::optional<std::string> hasta;
    std::optional<std::string> formato;
    std::optional<std::string> limites;
    bool calidad = false;
    bool todo = false;
};

// As asked for, or as the output's name tells.
Formato formatoDe(const OpcionesExportar& opciones) {
    if (opciones.formato) return leerFormato(*opciones.formato).value();
    return formatoDelNombre(opciones.salida).value_or(Formato::csv);
}

// A name that says something else than what the file holds.
void decirFormato(Consola& consola, const OpcionesExportar& opciones) {
    const auto final = std::filesystem::path(opciones.salida).extension();
    if (opciones.formato || final.empty() || formatoDelNombre(opciones.salida)) return;
    consola.aviso(
        fmt::format("{}: se escribe como csv; los nombres de otro formato terminan en .xls o .jsonl, o dé "
                    "--formato",
                    nombreVisible(opciones.salida)));
}

void exportar(ContextoHistorico& contexto, const OpcionesExportar& opciones) {
    PeticionTabla peticion{.formato = formatoDe(opciones),
                           .periodo = periodoEntre(opciones.desde, opciones.hasta),
                           .cuales = opciones.todo ? Cuales::todas : Cuales::lasQueCuentan,
                           .calidad = {},
                           .momento = contexto.entorno.reloj.ahora()};
    exigirUso(!opciones.calidad || peticion.formato != Formato::xls,
              "--calidad no cabe en un xls: pida csv o jsonl");
    exigirUso(!opciones.limites || opciones.calidad,
              "--limites es para las marcas: añada --calidad, o quítelo");
    const auto almacen = contexto.abrir(Uso::leer);
    const auto salida = contexto.salida(opciones.salida, reglaDeTabla(), almacen.get(), opciones.limites);
    Lectura lectura(*almacen);
    const auto estacion = lectura.estacion(opciones.estacion);
    if (opciones.calidad) {
        const auto limites = leerLimites(contexto, opciones.limites, almacen->limitesAlLado());
        peticion.calidad = limites.de(estacion.nombre);
    }
    if (salida.archivo()) decirFormato(contexto.consola, opciones);
    EscrituraConsola escritura(salida, contexto.entorno, contexto.consola);
    const auto muestras = escribirTabla(lectura, estacion, peticion, [&](std::string_view bytes) {
        contexto.atender();
        escritura.escribir(bytes);
    });
    escritura.terminar();
    if (muestras == 0)
        contexto.consola.aviso("no hay muestras en el período pedido: la tabla no lleva ninguna");
}

}  // namespace

Periodo periodoEntre(const std::optional<std::string>& desde, const std::optional<std::string>& hasta) {
    Periodo periodo;
    if (desde) periodo.desde = leerMomento(*desde);
    if (hasta) periodo.hasta = leerMomento(*hasta);
    exigirUso(!periodo.desde || !periodo.hasta || *periodo.desde < *periodo.hasta,
              "--desde debe ser anterior a --hasta");
    return periodo;
}

LimitesPorEstacion leerLimites(const ContextoHistorico& contexto, const std::optional<std::string>& pedidos,
                               const std::filesystem::path& alLado) {
    constexpr std::size_t kMaximo = 1U << 20;
    // One that is there and cannot be read, a link to nowhere also, is not left out in silence.
    std::error_code ninguno;
    const bool falta = alLado.empty() || std::filesystem::symlink_status(alLado, ninguno).type() ==
                                             std::filesystem::file_type::not_found;
    if (!pedidos && falta) return {};
    const auto archivo = pedidos ? *pedidos : alLado.string();
    const auto nombre = esEntradaEstandar(archivo) ? std::string("la entrada") : archivo;
    const auto bytes = contexto.leer(archivo, kMaximo + 1);
    // What would stand behind would count for nothing.
    if (bytes.size() > kMaximo) {
        throw ErrorLimites(fmt::format("{}: los límites tienen más de {} bytes, quite lo que sobra",
                                       nombreVisible(nombre), kMaximo));
    }
    return LimitesPorEstacion::leer({reinterpret_cast<const char*>(bytes.data()), bytes.size()}, nombre);
}

void declararExportar(Argumentos& argumentos, ContextoHistorico& contexto) {
    auto orden =
        argumentos.orden("exportar", "Escribe las muestras de una estación como convertir las escribe");
    const auto o = std::make_shared<OpcionesExportar>();
    orden.opcion(o->salida, {.nombre = "SALIDA",
                             .valor = "",
                             .ayuda = "Archivo que se escribe; - es la salida",
                             .obligatoria = true});
    orden.opcion(o->estacion, {.nombre = "--estacion",
                               .valor = "CIFRAS",
                               .ayuda = "Número de serie, o SERIE/NOMBRE",
                               .obligatoria = true});
    orden.opcion(o->desde, {.nombre = "--desde",
                            .valor = "F",
                            .ayuda = "Desde AAAA-MM-DD o AAAA-MM-DDTHH:MM, incluido",
                            .comprobar = motivoMomento});
    orden.opcion(
        o->hasta,
        {.nombre = "--hasta", .valor = "F", .ayuda = "Hasta entonces, excluido", .comprobar = motivoMomento});
    orden.opcion(o->formato, {.nombre = "--formato",
                              .valor = "FORMATO",
                              .ayuda = nombresDeFormatos() + "; si falta, el de la SALIDA, o csv",
                              .comprobar = motivoFormato});
    orden.bandera(o->calidad, "--calidad", "Añade las marcas de calidad de cada muestra (csv, jsonl)");
    orden.opcion(
        o->limites,
        {.nombre = "--limites",
         .valor = "ARCHIVO",
         .ayuda = "Límites de las marcas, - es la entrada; si falta, calidad.ini junto al archivo SQLite"});
    orden.bandera(o->todo, "--todo", "Todo registro distinto, también los que no cuentan");
    orden.alElegir([&contexto, o] { contexto.orden = [&contexto, o] { exportar(contexto, *o); }; });
}

}  // namespace telvane
