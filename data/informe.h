// The texts of the exported files and of the configuration report. Knows no control and no file name dialog.
// Texts are UTF-8 with CR LF line ends, blanks exactly as they are to appear; files are Windows-1252.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "data/bloques_texto.h"
#include "data/decodificador.h"
#include "data/formato.h"
#include "data/memoria.h"
#include "platform/reloj.h"

namespace telvane {

// What stands before the column names of the CSV file: title, moment, configuration text.
std::string encabezadoCsv(const FechaHora& momento, std::string_view textoConfig);

// The line of the column names. The spreadsheet's names four of its ten or eleven columns.
std::string columnasCsv(bool evaporacion);
std::string columnasXls();

// All that stands before a file's first sample.
std::string cabeceraDatos(Formato formato, const FechaHora& momento, std::string_view textoConfig,
                          bool evaporacion);

// The report that goes with the spreadsheet export. Its list of events is always empty.
std::string informeEventos(const FechaHora& momento, std::string_view textoConfig);

// The name proposed for the CSV file, without extension: "Finca Norte 7_3_2004". One plain name, whatever the
// location holds: a character that means more than itself to a file system, a file dialog or whatever expands
// names becomes "_". Outer blanks of the location go; without a location the date stands alone.
std::string nombreCsv(std::string_view ubicacion, const FechaHora& momento);

// The text of a whole data file, from its head and the samples of a run.
std::string textoDatos(Formato formato, std::string cabecera, const BloquesTexto& bloques);

// A whole file and what its decoding run found.
class ArchivoDatos {
   public:
    // texto: after its run.
    ArchivoDatos(BloquesTexto texto, const Recuento& hallado) : recuento(hallado), texto_(std::move(texto)) {}

    // As long as this lives.
    std::string_view bytes() const& { return texto_.entero(); }
    std::string_view bytes() && = delete;

    Recuento recuento;

   private:
    BloquesTexto texto_;
};

// Decodes blocks 0 to ultimoBloque of the image, in the decoder's profile and variant, into a file's bytes.
ArchivoDatos archivoDatos(Formato formato, const Memoria& memoria, Decodificador& decodificador,
                          std::int32_t ultimoBloque, const FechaHora& momento, std::string_view textoConfig);

}  // namespace telvane
