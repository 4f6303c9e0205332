#include "data/archivo_base.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <span>

#include <fmt/format.h>

#include "data/clase_de_archivo.h"
#include "loggerconfig/datos_config.h"
#include "loggerconfig/edicion.h"
#include "platform/archivo.h"
#include "platform/cp1252.h"
#include "platform/guardado.h"

namespace telvane {

namespace {

constexpr std::string_view kFiltro = "datos base (*.rgt)|*.rgt";
// The folder's text has a lower-case m here, unlike the exports'.
constexpr std::string_view kCarpeta = "C:\\mis Documentos\\";
// Of base files, of downloads that are not whole, and of those that were set aside.
constexpr std::array<std::string_view, 3> kTerminaciones = {".rgt", ".parcial", ".anterior"};
constexpr std::string_view kAhiHayUnaBase =
    "ahí está lo que parece un archivo base; quítelo de ahí, o dé otro nombre";
constexpr std::string_view kAhiHayUnaFicha =
    "ahí está la ficha de una descarga; quítela de ahí, o dé otro nombre";
constexpr std::string_view kAhiNoHayUnaFicha =
    "ahí está lo que no es la ficha de una descarga; quítelo de ahí, o dé otro nombre";
constexpr std::string_view kProcesado = "El archivo se proceso con exito";

// Empty: what stands there may be replaced.
std::string porqueSeQueda(std::span<const std::uint8_t> bytes, bool ficha) {
    if (pareceImagen(bytes)) return std::string(kAhiHayUnaBase);
    if (pareceFicha(bytes) == ficha) return "";
    return std::string(ficha ? kAhiNoHayUnaFicha : kAhiHayUnaFicha);
}

// For a memory: nothing makes a data sheet again, and whatever else somebody asked for may go.
std::string porqueNoCede(std::span<const std::uint8_t> bytes) {
    return std::string(!pareceImagen(bytes) && pareceFicha(bytes) ? kAhiHayUnaFicha : "");
}

// One more tells what is longer than a memory.
constexpr std::size_t kVista = kBytesMemoria + 1;

ReglaDestino reglaDeLoHecho(bool ficha) {
    return {.vedadas = kTerminaciones,
            .porque = [ficha](std::span<const std::uint8_t> bytes) { return porqueSeQueda(bytes, ficha); },
            .vista = kVista};
}

}  // namespace

std::string nombreArchivoBase(const std::string& digitosSerie, const FechaHora& momento) {
    std::string serie = digitosSerie;
    std::replace_if(
        serie.begin(), serie.end(), [](unsigned char c) { return !std::isalnum(c); }, '_');
    if (serie.find_first_not_of('_') == std::string::npos) serie = "sin_serie";
    const auto segundos = std::chrono::floor<std::chrono::seconds>(momento.deDia).count();
    return fmt::format("{}_{:04}{:02}{:02}_{:02}{:02}{:02}.rgt", serie, momento.anio, momento.mes,
                       momento.dia, segundos / 3600, segundos / 60 % 60, segundos % 60);
}

ReglaDestino reglaDeBase(bool reemplazar) {
    // The next download under the shorter name would take it for its own part, and end it.
    static constexpr auto kPartes = std::span(kTerminaciones).last<2>();
    return {.nuevo = !reemplazar,
            .vedadas = kPartes,
            .porque = porqueNoCede,
            .vista = kVista,
            .bytes = kBytesMemoria};
}

ReglaDestino reglaDeTabla() {
    return reglaDeLoHecho(false);
}

ReglaDestino reglaDeFlujos() {
    return {.porque =
                [](std::span<const std::uint8_t> bytes) {
                    return std::string(pareceImagen(bytes) && !pareceDiario(bytes) ? kAhiHayUnaBase : "");
                },
            .vista = kVista};
}

ReglaDestino reglaDeFicha(bool reemplazar) {
    auto regla = reglaDeLoHecho(true);
    regla.nuevo = !reemplazar;
    return regla;
}

std::filesystem::path rutaDeVez(const std::filesystem::path& primera, int vez) {
    if (vez == 1) return primera;
    auto ruta = primera;
    return ruta.replace_filename(
        fmt::format("{}_{}{}", primera.stem().string(), vez, primera.extension().string()));
}

std::filesystem::path rutaLibre(const std::filesystem::path& primera) {
    auto ruta = primera;
    std::error_code error;
    for (int vez = 2; std::filesystem::exists(std::filesystem::symlink_status(ruta, error)); ++vez)
        ruta = rutaDeVez(primera, vez);
    return ruta;
}

// The clock may go back, and a second is long enough for two.
std::filesystem::path rutaBaseLibre(const std::filesystem::path& carpeta, const std::string& digitosSerie,
                                    const FechaHora& momento) {
    return rutaLibre(carpeta / nombreArchivoBase(digitosSerie, momento));
}

void ArchivoBase::guardarDescarga() {
    // The number that the image itself carries: the form's may be one that no logger ever took.
    const auto serie = leerCabecera(datos_.memoria.imagen()).digitosSerie;
    const auto ruta = rutaBaseLibre(datos_.carpetaBase, serie, enlace_.reloj.ahora());
    try {
        if (datos_.carpetaBase.empty()) throw ErrorGuardado("no hay carpeta de datos del usuario");
        crearCarpeta(datos_.carpetaBase);
        guardarAtomico(ruta, datos_.memoria.imagen(), reglaDeBase());
        enlace_.forma.imprimir("archivo base: " + ruta.string());
    } catch (const ErrorGuardado& error) {
        enlace_.forma.imprimir(std::string("archivo base: ") + error.what());
    }
}

Tarea<> ArchivoBase::importar() {
    auto& forma = enlace_.forma;
    const auto antes = bloquearOperaciones(forma);
    PeticionArchivo peticion{
        .guardar = false, .filtro = std::string(kFiltro), .carpeta = std::string(kCarpeta), .nombre = {}};
    const auto ruta = co_await elegirArchivo(enlace_.dialogos, std::move(peticion));
    bool cargado = false;
    if (ruta) {
        try {
            const auto alcance = static_cast<std::size_t>(datos_.ultimoBloque + 1) * kBytesBloque;
            cargar(leerArchivo(*ruta, alcance));
            cargado = true;
        } catch (const ErrorLectura& error) {
            forma.imprimir(error.what());
        }
        if (cargado) co_await enlace_.avisar(kProcesado);
    }
    if (cargado) {
        forma.Command33.enabled = true;
        liberarOperaciones(forma);
    } else {
        devolverOperaciones(forma, antes, edicion_.editando());
    }
}

void ArchivoBase::cargar(const std::vector<std::uint8_t>& bytes) {
    auto& forma = enlace_.forma;
    forma.RichTextBox1.text = utf8DeCp1252(bytes);
    datos_.memoria.bloque(0)[0] = 0;
    forma.Command1.enabled = false;
    progress_.caption("Procesando Archivo");
    progress_.Command45.visible = false;
    progress_.mostrarConBarra(datos_.ultimoBloque);
    for (std::int32_t numero = 0; numero <= datos_.ultimoBloque; ++numero) {
        const auto bloque = datos_.memoria.bloque(static_cast<std::size_t>(numero));
        const auto desde = std::min(bytes.size(), static_cast<std::size_t>(numero) * kBytesBloque);
        const auto hasta = std::min(bytes.size(), desde + kBytesBloque);
        std::copy(bytes.begin() + static_cast<std::ptrdiff_t>(desde),
                  bytes.begin() + static_cast<std::ptrdiff_t>(hasta), bloque.begin());
        progress_.ProgressBar1.value = numero;
    }
    forma.Command1.enabled = true;
    progress_.descargar();
}

}  // namespace telvane
