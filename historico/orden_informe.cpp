// telvane-historico informe, resumen
#include <algorithm>
#include <memory>
#include <string>

#include <fmt/format.h>

#include "calidad/limites_por_estacion.h"
#include "consola/codigos_salida.h"
#include "data/archivo_base.h"
#include "data/clase_de_archivo.h"
#include "historico/abrir_archivo.h"
#include "historico/lectura_aparte.h"
#include "historico/ordenes.h"
#include "historico/textos_historico.h"
#include "informe/informe.h"
#include "informe/texto_html.h"
#include "loggerconfig/datos_config.h"
#include "platform/numero.h"
#include "platform/texto_visible.h"

namespace telvane {

namespace {

using informe::Informe;
using informe::Mes;
using informe::Plazo;

struct OpcionesInforme {
    std::string salida;
    std::optional<std::string> estacion;
    std::optional<std::string> imagen;
    std::optional<std::string> desde;
    std::optional<std::string> hasta;
    std::optional<std::string> mes;
    std::optional<std::string> limites;
    bool sinGuiones = false;
    bool abrir = false;
};

// "2018-11"
std::optional<Mes> leerMes(std::string_view texto) {
    if (texto.size() != 7 || texto[4] != '-') return std::nullopt;
    const Mes mes{.anio = numeroDe<int>(texto.substr(0, 4)).value_or(-1),
                  .mes = numeroDe<int>(texto.substr(5)).value_or(-1)};
    if (mes.anio < 0 || mes.mes < 1 || mes.mes > 12) return std::nullopt;
    return mes;
}
std::string motivoMes(const std::string& texto) {
    return leerMes(texto) ? "" : "debe ser AAAA-MM";
}

// The bounds that the line gives; whatever is open ends with the samples.
Periodo periodoPedido(const OpcionesInforme& opciones) {
    exigirUso(!opciones.mes || (!opciones.desde && !opciones.hasta), "--mes no admite --desde ni --hasta");
    if (!opciones.mes) return periodoEntre(opciones.desde, opciones.hasta);
    const auto plazo = leerMes(*opciones.mes)->plazo();
    return {.desde = plazo.desde, .hasta = plazo.hasta};
}

ErrorCli sinMuestras() {
    return {CodigoSalida::fallo, "no hay muestras en el período pedido"};
}

// The period with its ends where the samples have theirs, and none beyond what a logger can stamp: a page has
// a row for each of its months.
Plazo cerrar(const Periodo& periodo, const std::optional<Instante>& primera,
             const std::optional<Instante>& ultima) {
    if (!primera || !ultima) throw sinMuestras();
    const Plazo plazo{
        .desde = std::max(periodo.desde.value_or(*primera), kPrimerMomento),
        .hasta = std::min(periodo.hasta.value_or(*ultima + std::chrono::seconds(1)), kUltimoMomento)};
    if (plazo.desde > *ultima || plazo.hasta <= *primera) throw sinMuestras();
    return plazo;
}

struct Contado {
    informe::EstacionInformada estacion;
    Informe informe;
};

// A damaged image says nothing of them; the samples are there all the same.
void contarRanurasDeLaUltima(ContextoHistorico& contexto, Lectura& lectura, const EstacionGuardada& guardada,
                             informe::EstacionInformada& estacion) {
    try {
        const auto ranuras = contarRanuras(lectura.bytesDe(*guardada.resumen.masNueva));
        estacion.vacios = ranuras.vacias;
        estacion.descartados = ranuras.descartadas;
    } catch (const ErrorImagen& error) {
        contexto.consola.aviso(error.what());
    }
}

Contado contarEstacion(ContextoHistorico& contexto, Almacen& almacen, const OpcionesInforme& opciones,
                       const Periodo& periodo) {
    const auto limites = leerLimites(contexto, opciones.limites, almacen.limitesAlLado());
    Lectura lectura(almacen);
    const auto guardada = lectura.estacion(*opciones.estacion);
    const auto plazo = cerrar(periodo, guardada.resumen.desde, guardada.resumen.hasta);
    Contado contado{.estacion = {}, .informe = Informe(plazo)};
    auto& estacion = contado.estacion;
    estacion.nombre = guardada.nombre;
    estacion.evaporacion = guardada.evaporacion;
    informe::tomarCabecera(estacion, Lectura::cabecera(guardada));
    for (const auto& ficha : lectura.imagenes(guardada)) {
        // What a period shows comes from the images that reach into it.
        if (!ficha.desde || *ficha.hasta < plazo.desde || *ficha.desde >= plazo.hasta) continue;
        estacion.imagenes.push_back({.huella = textoDe(ficha.huella),
                                     .reloj = ficha.reloj,
                                     .bytes = ficha.bytes,
                                     .muestras = ficha.muestras,
                                     .retrocesos = ficha.retrocesos,
                                     .parcial = ficha.parcial()});
    }
    if (guardada.resumen.masNueva) contarRanurasDeLaUltima(contexto, lectura, guardada, estacion);
    // The marks hang on a sample's neighbours, not on the period: the whole series is looked at.
    Marcador marcador(limites.de(guardada.nombre), [&](const Juzgada& j) { contado.informe.agregar(j); });
    recorrerAparte(
        lectura, guardada, {}, Cuales::lasQueCuentan,
        [&](const Envio& envio) {
            envio.recorrer([&](const MuestraArchivada& m) {
                marcador.agregar(
                    {.instante = m.instante, .medidas = medidas(m.registro), .conflicto = m.conflicto});
            });
        },
        [&] { contexto.atender(); });
    marcador.terminar();
    contado.informe.terminar();
    return contado;
}

std::vector<std::uint8_t> leerImagen(const ContextoHistorico& contexto, const std::string& archivo) {
    // A byte more than an image tells a file that is none.
    auto bytes = contexto.leer(archivo, kBytesMemoria + 1);
    const auto mal = [&](std::string_view que) {
        const auto nombre = esEntradaEstandar(archivo) ? "la entrada" : nombreVisible(archivo);
        return ErrorCli(CodigoSalida::fallo, fmt::format("{}: {}", nombre, que));
    };
    if (bytes.size() > kBytesMemoria) throw mal("es más largo que una imagen de memoria");
    if (bytes.empty()) throw mal(kBaseVacia);
    if (const auto queja = quejaDeOtraClase(bytes); !queja.empty()) throw mal(queja);
    return bytes;
}

Contado contarImagen(const ContextoHistorico& contexto, const OpcionesInforme& opciones,
                     const Periodo& periodo) {
    const auto limites = leerLimites(contexto, opciones.limites, {});
    const auto bytes = leerImagen(contexto, *opciones.imagen);
    const auto filas = filasDe(bytes);
    const auto plazo = cerrar(periodo, filas.empty() ? std::nullopt : std::optional(filas.front().instante),
                              filas.empty() ? std::nullopt : std::optional(filas.back().instante));
    Contado contado{.estacion = {}, .informe = Informe(plazo)};
    auto& estacion = contado.estacion;
    estacion.nombre = serieDe(bytes).value_or("");
    estacion.evaporacion = !estacion.nombre.empty() && llevaEvaporacion(numeroDeSerie(estacion.nombre));
    informe::tomarCabecera(estacion,
                           std::span(bytes).first(std::min(bytes.size(), registro_config::kCabecera)));
    const auto cuenta = contarRanuras(bytes);
    estacion.vacios = cuenta.vacias;
    estacion.descartados = cuenta.descartadas;
    estacion.imagenes.push_back({.huella = textoDe(huellaDe(bytes)),
                                 .reloj = relojDe(bytes),
                                 .bytes = bytes.size(),
                                 .muestras = static_cast<std::int64_t>(filas.size()),
                                 .retrocesos = retrocesosDe(bytes),
                                 .parcial = esParcial(bytes)});
    Marcador marcador(limites.de(estacion.nombre), [&](const Juzgada& j) { contado.informe.agregar(j); });
    for (std::size_t i = 0; i < filas.size(); ++i) {
        const auto mismo = [&](std::size_t k) {
            return k < filas.size() && filas[k].instante == filas[i].instante;
        };
        marcador.agregar({.instante = filas[i].instante,
                          .medidas = medidas(filas[i].registro),
                          .conflicto = mismo(i - 1) || mismo(i + 1)});
    }
    marcador.terminar();
    contado.informe.terminar();
    return contado;
}

std::string ahora(const ContextoHistorico& contexto) {
    const auto momento = contexto.entorno.reloj.ahora();
    const auto minutos = std::chrono::floor<std::chrono::minutes>(momento.deDia).count();
    return fmt::format("{:02}/{:02}/{:04} {:02}:{:02}", momento.dia, momento.mes, momento.anio, minutos / 60,
                       minutos % 60);
}

void informar(ContextoHistorico& contexto, const OpcionesInforme& opciones) {
    exigirUso(opciones.estacion.has_value() != opciones.imagen.has_value(),
              "se espera --estacion o --imagen, una de las dos");
    exigirUso(!(opciones.imagen && opciones.limites && esEntradaEstandar(*opciones.imagen) &&
                esEntradaEstandar(*opciones.limites)),
              "la entrada se lee una sola vez: dé un archivo en --limites");
    const auto periodo = periodoPedido(opciones);
    auto almacen = opciones.imagen ? nullptr : contexto.abrir(Uso::leer);
    auto regla = reglaDeTabla();
    if (opciones.imagen) contexto.apuntarLeido(regla.leidos, *opciones.imagen);
    const auto salida = contexto.salida(opciones.salida, std::move(regla), almacen.get(), opciones.limites);
    const auto contado = opciones.imagen ? contarImagen(contexto, opciones, periodo)
                                         : contarEstacion(contexto, *almacen, opciones, periodo);
    almacen.reset();
    if (contado.informe.vacio()) throw sinMuestras();
    const auto html = informe::pagina(
        contado.estacion, contado.informe,
        {.guiones = !opciones.sinGuiones, .hecho = ahora(contexto), .version = TELVANE_VERSION});
    salida.escribir(contexto.entorno, contexto.consola, html);
    if (opciones.abrir && salida.archivo()) abrirConElEscritorio(opciones.salida);
}

void resumir(ContextoHistorico& contexto, const OpcionesInforme& opciones) {
    const auto periodo = periodoPedido(opciones);
    const auto almacen = contexto.abrir(Uso::leer);
    const auto contado = contarEstacion(contexto, *almacen, opciones, periodo);
    if (contado.informe.vacio()) throw sinMuestras();
    contexto.consola.resultado(informe::resumenDelMes(contado.estacion, contado.informe,
                                                      contado.informe.estadistica.meses().front()));
}

OpcionDeLinea opcionMes(bool obligatoria) {
    return {.nombre = "--mes",
            .valor = "AAAA-MM",
            .ayuda = "El mes",
            .comprobar = motivoMes,
            .obligatoria = obligatoria};
}
OpcionDeLinea opcionLimites() {
    return {
        .nombre = "--limites",
        .valor = "ARCHIVO",
        .ayuda = "Los límites de calidad, - es la entrada; si falta, calidad.ini junto al archivo SQLite"};
}

}  // namespace

void declararInforme(Argumentos& argumentos, ContextoHistorico& contexto) {
    auto orden = argumentos.orden("informe", "Lo que midió una estación, en una página para mirar");
    const auto opciones = std::make_shared<OpcionesInforme>();
    orden.opcion(opciones->salida, {.nombre = "SALIDA",
                                    .valor = "",
                                    .ayuda = "La página (.html); - es la salida estándar",
                                    .obligatoria = true});
    orden.opcion(opciones->estacion,
                 {.nombre = "--estacion", .valor = "CIFRAS", .ayuda = "Una estación del archivo histórico"});
    orden.opcion(opciones->imagen, {.nombre = "--imagen",
                                    .valor = "ARCHIVO.rgt",
                                    .ayuda = "Un archivo base, sin archivo histórico; - es la entrada"});
    orden.opcion(opciones->desde, {.nombre = "--desde",
                                   .valor = "F",
                                   .ayuda = "AAAA-MM-DD o AAAA-MM-DDTHH:MM, incluida",
                                   .comprobar = motivoMomento});
    orden.opcion(
        opciones->hasta,
        {.nombre = "--hasta", .valor = "F", .ayuda = "Lo mismo, excluida", .comprobar = motivoMomento});
    orden.opcion(opciones->mes, opcionMes(false));
    orden.opcion(opciones->limites, opcionLimites());
    orden.bandera(opciones->sinGuiones, "--sin-guiones", "Sin programas en la página: solo dibujos y tablas");
    orden.bandera(opciones->abrir, "--abrir", "La abre con el programa del escritorio");
    orden.alElegir(
        [&contexto, opciones] { contexto.orden = [&contexto, opciones] { informar(contexto, *opciones); }; });
}

void declararResumen(Argumentos& argumentos, ContextoHistorico& contexto) {
    auto orden = argumentos.orden("resumen", "El clima de un mes como texto de 80 columnas");
    const auto opciones = std::make_shared<OpcionesInforme>();
    orden.opcion(opciones->estacion, {.nombre = "--estacion",
                                      .valor = "CIFRAS",
                                      .ayuda = "Una estación del archivo histórico",
                                      .obligatoria = true});
    orden.opcion(opciones->mes, opcionMes(true));
    orden.opcion(opciones->limites, opcionLimites());
    orden.alElegir(
        [&contexto, opciones] { contexto.orden = [&contexto, opciones] { resumir(contexto, *opciones); }; });
}

}  // namespace telvane
