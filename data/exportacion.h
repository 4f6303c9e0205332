// The CSV export and the events and spreadsheet export of the memory image that is held.
#pragma once

#include <string>
#include <string_view>

#include "data/estado_datos.h"
#include "data/formato.h"
#include "link/enlace.h"
#include "loggerconfig/estado_config.h"
#include "platform/tarea.h"
#include "ui/forma_progress.h"

namespace telvane {

class Exportacion {
   public:
    Exportacion(Enlace& enlace, const EstadoConfig& config, EstadoDatos& datos, FormaProgress& progress)
        : enlace_(enlace), config_(config), datos_(datos), progress_(progress) {}

    // The CSV file: asks for its name, saves it, offers to open it. Runs at the end of every whole download.
    Tarea<> generargt();
    // Click on Command33: the spreadsheet text, and the report in RichTextBox2.
    Tarea<> exportarEventos();

   private:
    void bloquear();
    void liberar();
    // The configuration text that the file gets; sets the decoder's variant.
    std::string elegirConfiguracion();
    Recuento decodificar();
    // The whole file's text, after its run, in RichTextBox1.
    void mostrarDatos(Formato formato, const FechaHora& momento, std::string_view textoConfig);
    // Tells what was written once it is.
    Tarea<bool> guardar(PeticionArchivo peticion, const std::string& texto, Recuento recuento);

    Enlace& enlace_;
    const EstadoConfig& config_;
    EstadoDatos& datos_;
    FormaProgress& progress_;
    std::filesystem::path guardado_;
};

}  // namespace telvane
