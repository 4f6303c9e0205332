#include "data/archivo_base.h"

#include <algorithm>
#include <cctype>

#include <fmt/format.h>

#include "platform/archivo.h"
#include "platform/cp1252.h"
#include "platform/guardado.h"

namespace telvane {

namespace {

constexpr std::string_view kFiltro = "datos base (*.rgt)|*.rgt";
// The folder's text has a lower-case m here, unlike the exports'.
constexpr std::string_view kCarpeta = "C:\\mis Documentos\\";
constexpr std::string_view kExito = "El archivo se proceso con exito";

}  // namespace

std::string nombreArchivoBase(const std::string& digitosSerie, const FechaHora& momento) {
    std::string serie = digitosSerie.empty() ? "sin_serie" : digitosSerie;
    std::replace_if(
        serie.begin(), serie.end(), [](unsigned char c) { return !std::isalnum(c) && c != '_'; }, '_');
    const auto segundos = std::chrono::floor<std::chrono::seconds>(momento.deDia).count();
    return fmt::format("{}_{:04}{:02}{:02}_{:02}{:02}{:02}.rgt", serie, momento.anio, momento.mes,
                       momento.dia, segundos / 3600, segundos / 60 % 60, segundos % 60);
}

void ArchivoBase::guardarDescarga() {
    const auto ruta = datos_.carpetaBase / nombreArchivoBase(config_.digitosSerie, enlace_.reloj.ahora());
    try {
        if (datos_.carpetaBase.empty()) throw ErrorGuardado("no hay carpeta de datos del usuario");
        std::filesystem::create_directories(datos_.carpetaBase);
        guardarAtomico(ruta, datos_.memoria.imagen());
        enlace_.forma.imprimir("archivo base: " + ruta.string());
    } catch (const ErrorGuardado& error) {
        enlace_.forma.imprimir(std::string("archivo base: ") + error.what());
    } catch (const std::filesystem::filesystem_error& error) {
        enlace_.forma.imprimir("archivo base: no se pudo crear la carpeta " + datos_.carpetaBase.string() +
                               ": " + motivoSistema(error.code().value()));
    }
}

Tarea<> ArchivoBase::importar() {
    auto& forma = enlace_.forma;
    bloquearOperaciones(forma);
    PeticionArchivo peticion{
        .guardar = false, .filtro = std::string(kFiltro), .carpeta = std::string(kCarpeta), .nombre = {}};
    const auto ruta = co_await elegirArchivo(enlace_.dialogos, std::move(peticion));
    if (ruta) {
        bool cargado = false;
        try {
            const auto alcance = static_cast<std::size_t>(datos_.ultimoBloque + 1) * kBytesBloque;
            cargar(leerArchivo(*ruta, alcance));
            cargado = true;
        } catch (const ErrorLectura& error) {
            forma.imprimir(error.what());
        }
        if (cargado) co_await enlace_.avisar(kExito);
    }
    forma.Command33.enabled = true;
    liberarOperaciones(forma);
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
