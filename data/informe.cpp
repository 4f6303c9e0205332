#include "data/informe.h"

#include <fmt/format.h>

#include "platform/cp1252.h"
#include "regional/formatos.h"
#include "ui/textos.h"

namespace telvane {

namespace {

constexpr std::string_view kColumnasCsv =
    "Fecha,Hora,RH[%],Temp[ºC],Dir Viento [º], Dir Viento (R) ,Vel Viento[km/h],Rad Solar [KW/m2],Pres. Atm "
    "[kPa],"
    "Plu parcial[mm]";
constexpr std::string_view kColumnaEvaporacion = ",Eva parcial[mm]";
constexpr std::string_view kColumnasXls = "Fecha,Hora,Temperatura[ºC],Precipitacion[mm]";

// The line that says when, and the empty one after it.
std::string lineaMomento(std::string_view fecha, std::string_view hora) {
    return fmt::format("proceso realizado el {}  a las {}\r\n\r\n", fecha, hora);
}

// Bytes of the blank that the text begins or ends with: an ordinary one, or the one that keeps words
// together. 0: none.
constexpr std::string_view kBlancoDuro = "\u00A0";
std::size_t blancoAlComienzo(std::string_view texto) {
    if (texto.starts_with(' ')) return 1;
    return texto.starts_with(kBlancoDuro) ? kBlancoDuro.size() : 0;
}
std::size_t blancoAlFinal(std::string_view texto) {
    if (texto.ends_with(' ')) return 1;
    return texto.ends_with(kBlancoDuro) ? kBlancoDuro.size() : 0;
}

std::string_view sinBlancosExteriores(std::string_view texto) {
    while (const auto cuantos = blancoAlComienzo(texto)) texto.remove_prefix(cuantos);
    while (const auto cuantos = blancoAlFinal(texto)) texto.remove_suffix(cuantos);
    return texto;
}

// What means something else than itself: to a file system, that of a memory stick included, to a file dialog,
// which parts names at quotation marks, or to whatever expands names.
constexpr std::string_view kEspeciales = "/\\:*?\"<>|$`";
// At the beginning only: somebody's home folder, a hidden file, an option.
constexpr std::string_view kEspecialesAlComienzo = "~.-";

// Number of bytes of the character that a file name must not hold, at the text's head; 0 for any other
// character.
std::size_t prohibido(std::string_view texto) {
    const auto b0 = static_cast<unsigned char>(texto[0]);
    if (b0 < 0x20 || b0 == 0x7F || kEspeciales.find(texto[0]) != std::string_view::npos) return 1;
    // The control characters U+0080 to U+009F.
    const auto b1 = static_cast<unsigned char>(texto.size() > 1 ? texto[1] : '\0');
    return b0 == 0xC2 && b1 >= 0x80 && b1 < 0xA0 ? 2 : 0;
}

}  // namespace

std::string encabezadoCsv(const FechaHora& momento, std::string_view textoConfig) {
    return fmt::format(" Equipo Registrador VELTRA \r\n{}Datos de configuracion\r\n{}",
                       lineaMomento(fechaCorta(momento), horaLarga(momento)), textoConfig);
}

std::string columnasCsv(bool evaporacion) {
    return fmt::format("{}{}{}", kColumnasCsv, evaporacion ? kColumnaEvaporacion : "", textos::kFinLinea);
}

std::string columnasXls() {
    return fmt::format("{}{}", kColumnasXls, textos::kFinLinea);
}

std::string informeEventos(const FechaHora& momento, std::string_view textoConfig) {
    return fmt::format(
        "Registro de eventos y configuracion de equipo registrador  \r\n{}DATOS DE CONFIGURACION\r\n{}"
        "\r\n\r\nEventos producidos:\r\n",
        lineaMomento(fechaLarga(momento), horaLarga(momento)), textoConfig);
}

std::string cabeceraDatos(Formato formato, const FechaHora& momento, std::string_view textoConfig,
                          bool evaporacion) {
    switch (formato) {
        case Formato::csv:
            return encabezadoCsv(momento, textoConfig) + columnasCsv(evaporacion);
        case Formato::xls:
            return columnasXls();
        case Formato::jsonl:
            break;
    }
    return {};
}

std::string textoDatos(Formato formato, std::string cabecera, const BloquesTexto& bloques) {
    const auto muestras = bloques.unidos();
    const auto pie = fila(formato).pie;
    cabecera.reserve(cabecera.size() + muestras.size() + pie.size());
    return std::move(cabecera.append(muestras).append(pie));
}

std::string nombreCsv(std::string_view ubicacion, const FechaHora& momento) {
    std::string nombre;
    for (auto resto = sinBlancosExteriores(ubicacion); !resto.empty();) {
        const auto mal = prohibido(resto);
        nombre += mal > 0 ? '_' : resto.front();
        resto.remove_prefix(mal > 0 ? mal : 1);
    }
    auto fecha = fmt::format("{}_{}_{}", momento.dia, momento.mes, momento.anio);
    if (nombre.empty()) return fecha;
    if (kEspecialesAlComienzo.find(nombre.front()) != std::string_view::npos) nombre.front() = '_';
    return fmt::format("{} {}", nombre, fecha);
}

ArchivoDatos archivoDatos(Formato formato, const Memoria& memoria, Decodificador& decodificador,
                          std::int32_t ultimoBloque, const FechaHora& momento, std::string_view textoConfig) {
    const auto cabecera = cabeceraDatos(formato, momento, textoConfig, decodificador.evaporacion());
    // The samples are plain ASCII.
    BloquesTexto bloques(cp1252DeUtf8(cabecera), std::string(fila(formato).pie), fila(formato).redaccion);
    const auto recuento = bloques.decodificar(memoria, decodificador, ultimoBloque);
    return {std::move(bloques), recuento};
}

}  // namespace telvane
