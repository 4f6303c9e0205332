// The texts of the exported files and of the configuration report. Knows no control and no file name dialog.
// Texts are UTF-8 with CR LF line ends, blanks exactly as they are to appear; files are Windows-1252.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

#include "data/bloques_texto.h"
#include "data/decodificador.h"
#include "data/memoria.h"
#include "platform/reloj.h"

namespace telvane {

// What stands before the column names of the CSV file: title, moment, configuration text.
std::string encabezadoCsv(const FechaHora& momento, std::string_view textoConfig);

// The line of the column names. The spreadsheet's names four of its ten or eleven columns.
std::string columnasCsv(bool evaporacion);
std::string columnasXls();

// The report that goes with the spreadsheet export. Its list of events is always empty.
std::string informeEventos(const FechaHora& momento, std::string_view textoConfig);

// The name proposed for the CSV file, without extension: "Finca Norte 7_3_2004". Nothing in the location can
// choose a folder: a slash or a control character becomes "_". Outer blanks of the location go.
std::string nombreCsv(std::string_view ubicacion, const FechaHora& momento);

// What follows a cabecera in every data file: the sample lines and a final line end.
std::string conMuestras(std::string cabecera, const BloquesTexto& bloques);

// A whole file and what its decoding run found.
class ArchivoDatos {
   public:
    // texto: after its run.
    ArchivoDatos(BloquesTexto texto, const Recuento& hallado) : recuento(hallado), texto_(std::move(texto)) {}
    ArchivoDatos(std::string texto, const Recuento& hallado) : recuento(hallado), texto_(std::move(texto)) {}

    // As long as this lives.
    std::string_view bytes() const&;
    std::string_view bytes() && = delete;

    Recuento recuento;

   private:
    std::variant<BloquesTexto, std::string> texto_;
};

// Decodes blocks 0 to ultimoBloque of the image, in the decoder's profile and variant, into a file's bytes.
// alBloque, if given, is told each block's number after it is done.
ArchivoDatos archivoCsv(const Memoria& memoria, Decodificador& decodificador, std::int32_t ultimoBloque,
                        const FechaHora& momento, std::string_view textoConfig,
                        const std::function<void(std::int32_t)>& alBloque = {});
ArchivoDatos archivoXls(const Memoria& memoria, Decodificador& decodificador, std::int32_t ultimoBloque,
                        const std::function<void(std::int32_t)>& alBloque = {});

}  // namespace telvane
