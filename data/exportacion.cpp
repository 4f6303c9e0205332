#include "data/exportacion.h"

#include <utility>

#include "data/archivo_base.h"
#include "data/config_de_archivo.h"
#include "data/informe.h"
#include "platform/cp1252.h"
#include "platform/guardado.h"
#include "platform/texto_visible.h"
#include "ui/textos.h"

namespace telvane {

namespace {

constexpr std::string_view kNombreXls = "datos";
constexpr std::string_view kAbrir = "Desea Abrir Archivo";

}  // namespace

Tarea<> Exportacion::generargt() {
    auto& forma = enlace_.forma;
    bloquear();
    const auto momento = enlace_.reloj.ahora();
    const auto textoConfig = elegirConfiguracion();
    forma.RichTextBox2.text = encabezadoCsv(momento, textoConfig);
    const auto recuento = decodificar();
    forma.Command1.enabled = true;
    mostrarDatos(Formato::csv, momento, textoConfig);

    PeticionArchivo peticion{.guardar = true,
                             .filtro = std::string(fila(Formato::csv).filtro),
                             .carpeta = std::string(textos::kCarpetaDocumentos),
                             .nombre = nombreCsv(forma.Text3.text(), momento)};
    if (co_await guardar(std::move(peticion), forma.RichTextBox1.text(), recuento)) {
        const auto abrir = co_await preguntar(enlace_.dialogos, Mensaje(kAbrir, Botones::siNo));
        if (abrir == Boton::si) {
            enlace_.dialogos.abrirDocumento(guardado_, [&forma, archivo = nombreVisible(guardado_)] {
                forma.imprimir("no se pudo abrir " + archivo);
            });
        }
    }
    liberar();
}

Tarea<> Exportacion::exportarEventos() {
    auto& forma = enlace_.forma;
    bloquear();
    const auto momento = enlace_.reloj.ahora();
    const auto textoConfig = elegirConfiguracion();
    const auto recuento = decodificar();
    progress_.Command45.visible = true;
    forma.Command1.enabled = true;
    mostrarDatos(Formato::xls, momento, textoConfig);
    forma.RichTextBox2.text = informeEventos(momento, textoConfig);
    PeticionArchivo peticion{.guardar = true,
                             .filtro = std::string(fila(Formato::xls).filtro),
                             .carpeta = std::string(textos::kCarpetaDocumentos),
                             .nombre = std::string(kNombreXls)};
    co_await guardar(std::move(peticion), forma.RichTextBox1.text(), recuento);
    liberar();
}

void Exportacion::bloquear() {
    enlace_.forma.Timer1.enabled = false;
    bloquearOperaciones(enlace_.forma);
    enlace_.forma.Command1.enabled = false;
}

void Exportacion::liberar() {
    enlace_.forma.Timer1.enabled = true;
    liberarOperaciones(enlace_.forma);
}

std::string Exportacion::elegirConfiguracion() {
    auto config = configDeArchivo(datos_.memoria.imagen(), {config_.textoConfig, config_.numeroSerie});
    datos_.decodificador.evaporacion(config.evaporacion);
    return std::move(config.texto);
}

Recuento Exportacion::decodificar() {
    progress_.caption("Generacion de Archivo");
    progress_.mostrarConBarra(datos_.ultimoBloque);
    const auto recuento =
        datos_.bloquesTexto.decodificar(datos_.memoria, datos_.decodificador, datos_.ultimoBloque,
                                        [&](std::int32_t bloque) { progress_.ProgressBar1.value = bloque; });
    progress_.caption("Generacion");
    progress_.descargar();
    return recuento;
}

void Exportacion::mostrarDatos(Formato formato, const FechaHora& momento, std::string_view textoConfig) {
    enlace_.forma.RichTextBox1.text =
        textoDatos(formato, cabeceraDatos(formato, momento, textoConfig, datos_.decodificador.evaporacion()),
                   datos_.bloquesTexto);
}

Tarea<bool> Exportacion::guardar(PeticionArchivo peticion, const std::string& texto, Recuento recuento) {
    const auto ruta = co_await elegirArchivo(enlace_.dialogos, std::move(peticion));
    if (!ruta) co_return false;
    try {
        guardarAtomico(*ruta, cp1252DeUtf8(texto), reglaDeTabla());
    } catch (const ErrorGuardado& error) {
        enlace_.forma.imprimir(error.what());
        co_return false;
    }
    guardado_ = *ruta;
    enlace_.forma.imprimir(recuento.texto());
    co_return true;
}

}  // namespace telvane
