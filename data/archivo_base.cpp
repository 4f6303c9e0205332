#include "data/archivo_base.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <span>

#include <fmt/format.h>

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
constexpr std::string_view kProcesado = "El archivo se proceso con exito";

std::string_view comoTexto(std::span<const std::uint8_t> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

bool noEsTexto(std::uint8_t b) {
    return b < ' ' && b != '\t' && b != '\r' && b != '\n';
}

// The eight digits of a serial number, or an erased one.
bool empiezaPorSerie(std::span<const std::uint8_t> bytes) {
    const auto serie = bytes.first(kBytesSerie);
    return std::ranges::all_of(serie, [](std::uint8_t b) { return (b & 0x0F) <= 9 && b >> 4 <= 9; }) ||
           std::ranges::all_of(serie, [](std::uint8_t b) { return b == 0xFF; });
}

// A number that the line has spoilt leaves the rest as it was: whole blocks, and an interval that there is.
// Every table begins with letters.
bool tieneFormaDeMemoria(std::span<const std::uint8_t> bytes) {
    const auto esLetra = [](std::uint8_t b) { return !noEsTexto(b) && b < 0x80; };
    return !std::ranges::all_of(bytes.first(kBytesSerie), esLetra) && bytes.size() % kBytesBloque == 0 &&
           bytes.size() > registro_config::kIntervalo &&
           indiceIntervalo(bytes[registro_config::kIntervalo]).has_value();
}

// No text's first line goes on like this: for all that anybody can tell a logger's, whole or not. The
// spreadsheets' own formats begin otherwise; further down a table holds whatever the logger's texts do. As
// long as a memory only a memory is.
bool pareceImagen(std::span<const std::uint8_t> bytes) {
    if (bytes.size() < kBytesSerie) return false;
    if (bytes.size() == kBytesMemoria)
        return std::ranges::any_of(bytes, [](std::uint8_t b) { return noEsTexto(b) || b == 0xFF; });
    const auto linea = comoTexto(bytes).substr(0, comoTexto(bytes).find("\r\n"));
    return std::ranges::any_of(bytes.first(linea.size()), noEsTexto) &&
           (empiezaPorSerie(bytes) || tieneFormaDeMemoria(bytes));
}

// Two names that no table has, in whatever order and behind whatever an editor put before them.
bool pareceFicha(std::string_view texto) {
    return texto.find("\"descargada\"") != std::string_view::npos &&
           texto.find("\"errores_de_linea\"") != std::string_view::npos;
}

// Empty: what stands there may be replaced.
std::string porqueSeQueda(const std::filesystem::path& ruta, bool ficha) {
    // One more tells what is longer than a memory.
    const auto bytes = leerArchivo(ruta, kBytesMemoria + 1);
    if (pareceImagen(bytes)) return std::string(kAhiHayUnaBase);
    return !ficha && pareceFicha(comoTexto(bytes)) ? std::string(kAhiHayUnaFicha) : "";
}

ReglaDestino reglaDeLoHecho(bool ficha) {
    return {.vedadas = kTerminaciones,
            .porque = [ficha](const std::filesystem::path& ruta) { return porqueSeQueda(ruta, ficha); }};
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
    return {.nuevo = !reemplazar, .vedadas = kPartes, .bytes = kBytesMemoria};
}

ReglaDestino reglaDeTabla() {
    return reglaDeLoHecho(false);
}

ReglaDestino reglaDeFicha() {
    return reglaDeLoHecho(true);
}

std::filesystem::path rutaLibre(const std::filesystem::path& primera) {
    auto ruta = primera;
    std::error_code error;
    for (int vez = 2; std::filesystem::exists(std::filesystem::symlink_status(ruta, error)); ++vez) {
        ruta.replace_filename(
            fmt::format("{}_{}{}", primera.stem().string(), vez, primera.extension().string()));
    }
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
