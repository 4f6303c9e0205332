// Whether an archive is what its images say.
#include <algorithm>
#include <iterator>
#include <tuple>
#include <utility>

#include <fmt/format.h>

#include "historico/archivo.h"
#include "historico/esquema.h"
#include "historico/lectura.h"
#include "historico/rescate.h"
#include "platform/contados.h"

namespace telvane {

namespace {

using Lineas = std::vector<std::string>;

// More of one station say nothing more.
constexpr std::size_t kLineasPorEstacion = 10;

std::vector<Fila> filasDelAnio(Almacen& almacen, IdEstacion estacion, int anio) {
    using namespace std::chrono;
    const auto primero = [](int cual) { return Instante{local_days{year{cual} / 1 / 1}}; };
    std::vector<Fila> filas;
    almacen.filas(estacion, primero(anio), primero(anio + 1) - seconds(1),
                  [&](const Fila& fila) { filas.push_back(fila); });
    return filas;
}

std::string hora(const Fila& fila) {
    const auto f = fechaDe(fila.instante);
    const auto h = horaDe(fila.instante);
    return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}", f.anio, f.mes, f.dia, h.hora, h.minuto,
                       h.segundo);
}

// What is only in one of the two, or counts in one of them only.
void compararFilas(const std::vector<Fila>& hay, const std::vector<Fila>& debe, Lineas& defectos) {
    auto a = hay.begin();
    auto b = debe.begin();
    while (a != hay.end() || b != debe.end()) {
        if (b == debe.end() || (a != hay.end() && *a < *b)) {
            defectos.push_back(fmt::format("sobra la muestra de {}", hora(*a++)));
        } else if (a == hay.end() || *b < *a) {
            defectos.push_back(fmt::format("falta la muestra de {}", hora(*b++)));
        } else {
            if (a->cuenta != b->cuenta) {
                defectos.push_back(
                    fmt::format("la muestra de {} cuenta cuando no debe, o al revés", hora(*a)));
            }
            ++a;
            ++b;
        }
    }
}

// One that is gone without a trace takes samples along, which nothing else bears out.
bool faltanImagenes(const ResumenEstacion& hay, const ResumenEstacion& debe) {
    return hay.imagenes > debe.imagenes && hay.muestras > debe.muestras;
}

void compararResumenes(const ResumenEstacion& hay, const ResumenEstacion& debe, Lineas& defectos) {
    const auto comparar = [&](std::string_view que, std::int64_t uno, std::int64_t otro) {
        if (uno != otro) defectos.push_back(fmt::format("{}: hay {} y deben ser {}", que, uno, otro));
    };
    if (!faltanImagenes(hay, debe)) comparar("imágenes", hay.imagenes, debe.imagenes);
    comparar("muestras", hay.muestras, debe.muestras);
    comparar("huecos", hay.huecos, debe.huecos);
    comparar("conflictos", hay.conflictos, debe.conflictos);
    const bool igual = hay.desde == debe.desde && hay.hasta == debe.hasta && hay.masNueva == debe.masNueva &&
                       hay.cabecera == debe.cabecera && hay.incorporada == debe.incorporada;
    if (!igual) defectos.emplace_back("el resumen no es el de sus imágenes");
}

std::string anotadaEnFalso(const Huella& huella) {
    return fmt::format("lo anotado de la imagen {} no es lo que dice", textoDe(huella));
}

void compararFichas(const std::vector<FichaImagen>& hay, const std::vector<FichaImagen>& debe,
                    Lineas& defectos) {
    for (const auto& una : hay) {
        const auto suya =
            std::ranges::find_if(debe, [&](const FichaImagen& otra) { return otra.huella == una.huella; });
        const auto todo = [](const FichaImagen& f) {
            return std::tuple(f.bytes, f.reloj, f.desde, f.hasta, f.muestras, f.retrocesos, f.contenida);
        };
        if (suya == debe.end() || todo(*suya) != todo(una)) defectos.push_back(anotadaEnFalso(una.huella));
    }
}

Lineas conRemedio(Lineas lineas) {
    for (auto& linea : lineas) linea += fmt::format(": {}", kReponer);
    return lineas;
}

// Who holds which record of the stamps in conflict.
std::vector<std::tuple<Instante, BytesMuestra, std::size_t, Huella>> testigosDe(Almacen& almacen,
                                                                                IdEstacion estacion) {
    std::vector<std::tuple<Instante, BytesMuestra, std::size_t, Huella>> lista;
    for (const auto& t : almacen.testigos(estacion, kPrimerMomento, kUltimoMomento)) {
        lista.emplace_back(t.instante, t.registro, t.ranura, t.imagen);
    }
    std::ranges::sort(lista);
    return lista;
}

// How many of them have no line of their own.
std::size_t decir(const std::string& estacion, const Lineas& lineas, Lineas& defectos) {
    for (std::size_t i = 0; i < std::min(lineas.size(), kLineasPorEstacion); ++i)
        defectos.push_back(fmt::format("estación {}: {}", estacion, lineas[i]));
    if (lineas.size() <= kLineasPorEstacion) return 0;
    const auto mas = lineas.size() - kLineasPorEstacion;
    defectos.push_back(fmt::format("estación {}: y {} más", estacion,
                                   contados(static_cast<std::int64_t>(mas), "defecto", "defectos")));
    // The line that says how many is none itself.
    return mas - 1;
}

}  // namespace

Archivo::Comprobado Archivo::comprobar(Almacen& prueba, const std::function<void()>& alAvanzar) {
    auto defectos = almacen_.partesQueFaltan();
    // Nothing more can be asked of it.
    if (!defectos.empty()) return {defectos, defectos.size()};
    Lectura lectura(almacen_);
    defectos = almacen_.sobras();
    std::ranges::move(almacen_.valoresImposibles(), std::back_inserter(defectos));
    std::ranges::move(almacen_.sinEstacion(), std::back_inserter(defectos));
    std::ranges::move(almacen_.defectos(), std::back_inserter(defectos));
    const Rescate rescate(almacen_, alAvanzar);
    std::size_t callados = 0;
    for (const auto& [nombre, lineas] : rescate.porReponer()) callados += decir(nombre, lineas, defectos);
    std::ranges::move(rescate.perdidas(fmt::format("haga rehacer, y {}", kVuelvaAIncorporarla)),
                      std::back_inserter(defectos));
    for (const auto& estacion : lectura.estaciones()) {
        // Without all of its images nobody knows what the samples must be.
        if (rescate.afecta(estacion.id)) continue;
        callados += decir(estacion.nombre, comprobarUna(lectura, estacion, prueba, alAvanzar), defectos);
    }
    return {defectos, defectos.size() + callados};
}

// Against what its images say in a store of their own.
std::vector<std::string> Archivo::comprobarUna(Lectura& lectura, const EstacionGuardada& estacion,
                                               Almacen& prueba, const std::function<void()>& alAvanzar) {
    Archivo deNuevo(prueba);
    Imagenes imagenes(almacen_, estacion.id);
    Lineas lineas;
    for (const auto& ficha : lectura.imagenes(estacion)) {
        alAvanzar();
        // Its content may be another station's.
        const auto* bytes = imagenes.siSeLee(ficha.huella);
        if (bytes != nullptr) {
            deNuevo.copiarUna(estacion, ficha, *bytes);
        } else {
            lineas.push_back(anotadaEnFalso(ficha.huella));
        }
    }
    // What the others say is not all.
    if (!lineas.empty()) return conRemedio(std::move(lineas));
    if (const auto votos = almacen_.testigosPerdidos(estacion.id); votos > 0)
        lineas.push_back(fmt::format("testigos de una imagen que no está: {}", votos));
    const auto debe = prueba.estacion(estacion.nombre).value();
    compararResumenes(estacion.resumen, debe.resumen, lineas);
    compararFichas(lectura.imagenes(estacion), prueba.fichas(debe.id), lineas);
    if (testigosDe(almacen_, estacion.id) != testigosDe(prueba, debe.id))
        lineas.emplace_back("los testigos de sus conflictos no son los de sus imágenes");
    for (int anio = 2000; anio < 2100; ++anio)
        compararFilas(filasDelAnio(almacen_, estacion.id, anio), filasDelAnio(prueba, debe.id, anio), lineas);
    lineas = conRemedio(std::move(lineas));
    if (faltanImagenes(estacion.resumen, debe.resumen)) {
        lineas.insert(
            lineas.begin(),
            fmt::format("dice tener {} y quedan {}: si falta alguna, incorpore antes su .rgt; rehacer "
                        "quita las muestras que solo ella tenía",
                        contados(estacion.resumen.imagenes, "imagen", "imágenes"), debe.resumen.imagenes));
    }
    if (const auto fichas = almacen_.descargasPerdidas(estacion.id); fichas > 0) {
        lineas.push_back(
            fmt::format("fichas de descarga de una imagen que no está: {}: rehacer las quita", fichas));
    }
    return lineas;
}

}  // namespace telvane
