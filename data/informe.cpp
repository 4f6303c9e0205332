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

std::string_view sinBlancosExteriores(std::string_view texto) {
    while (!texto.empty() && texto.front() == ' ') texto.remove_prefix(1);
    while (!texto.empty() && texto.back() == ' ') texto.remove_suffix(1);
    return texto;
}

// Number of bytes of the character that a file name must not hold, at the text's head; 0 for any other
// character.
std::size_t prohibido(std::string_view texto) {
    const auto b0 = static_cast<unsigned char>(texto[0]);
    if (b0 < 0x20 || b0 == 0x7F || b0 == '/') return 1;
    // The control characters U+0080 to U+009F.
    const auto b1 = static_cast<unsigned char>(texto.size() > 1 ? texto[1] : '\0');
    return b0 == 0xC2 && b1 >= 0x80 && b1 < 0xA0 ? 2 : 0;
}

ArchivoDatos archivo(std::string_view cabecera, const Memoria& memoria, Decodificador& decodificador,
                     std::int32_t ultimoBloque, const std::function<void(std::int32_t)>& alBloque) {
    // The sample lines are plain ASCII.
    BloquesTexto bloques(cp1252DeUtf8(cabecera), std::string(textos::kFinLinea));
    const auto recuento = bloques.decodificar(memoria, decodificador, ultimoBloque, alBloque);
    return {std::move(bloques), recuento};
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

std::string conMuestras(std::string cabecera, const BloquesTexto& bloques) {
    const auto muestras = bloques.unidos();
    cabecera.reserve(cabecera.size() + muestras.size() + textos::kFinLinea.size());
    return std::move(cabecera.append(muestras).append(textos::kFinLinea));
}

std::string_view ArchivoDatos::bytes() const& {
    const auto* bloques = std::get_if<BloquesTexto>(&texto_);
    return bloques ? bloques->entero() : std::string_view(std::get<std::string>(texto_));
}

std::string nombreCsv(std::string_view ubicacion, const FechaHora& momento) {
    std::string nombre;
    for (auto resto = sinBlancosExteriores(ubicacion); !resto.empty();) {
        const auto mal = prohibido(resto);
        nombre += mal > 0 ? '_' : resto.front();
        resto.remove_prefix(mal > 0 ? mal : 1);
    }
    return fmt::format("{} {}_{}_{}", nombre, momento.dia, momento.mes, momento.anio);
}

ArchivoDatos archivoCsv(const Memoria& memoria, Decodificador& decodificador, std::int32_t ultimoBloque,
                        const FechaHora& momento, std::string_view textoConfig,
                        const std::function<void(std::int32_t)>& alBloque) {
    const auto cabecera = encabezadoCsv(momento, textoConfig) + columnasCsv(decodificador.evaporacion());
    return archivo(cabecera, memoria, decodificador, ultimoBloque, alBloque);
}

ArchivoDatos archivoXls(const Memoria& memoria, Decodificador& decodificador, std::int32_t ultimoBloque,
                        const std::function<void(std::int32_t)>& alBloque) {
    return archivo(columnasXls(), memoria, decodificador, ultimoBloque, alBloque);
}

}  // namespace telvane
