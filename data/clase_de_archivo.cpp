#include "data/clase_de_archivo.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <optional>
#include <string>
#include <utility>

#include <fmt/format.h>

#include "data/miembros_ficha.h"
#include "data/registros.h"
#include "loggerconfig/datos_config.h"

namespace telvane {

namespace {

using Bytes = std::span<const std::uint8_t>;

std::string_view comoTexto(Bytes bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

bool noEsTexto(std::uint8_t b) {
    return b < ' ' && b != '\t' && b != '\r' && b != '\n';
}

// But for those that it begins with.
Bytes sinCeros(Bytes bytes) {
    const auto primero = std::ranges::find_if(bytes, [](std::uint8_t b) { return b != 0; });
    return bytes.subspan(static_cast<std::size_t>(primero - bytes.begin()));
}

// The eight digits of a serial number, or an erased one.
bool empiezaPorSerie(Bytes bytes) {
    const auto serie = bytes.first(kBytesSerie);
    return std::ranges::all_of(serie, [](std::uint8_t b) { return (b & 0x0F) <= 9 && b >> 4 <= 9; }) ||
           std::ranges::all_of(serie, [](std::uint8_t b) { return b == 0xFF; });
}

bool llevaIntervalo(Bytes bytes) {
    return bytes.size() > registro_config::kIntervalo &&
           indiceIntervalo(bytes[registro_config::kIntervalo]).has_value();
}

// A number that the line has spoilt leaves the rest as it was: whole blocks, and an interval that there is.
// Every table begins with letters.
bool tieneFormaDeMemoria(Bytes bytes) {
    const auto esLetra = [](std::uint8_t b) { return !noEsTexto(b) && b < 0x80; };
    return !std::ranges::all_of(bytes.first(kBytesSerie), esLetra) && bytes.size() % kBytesBloque == 0 &&
           llevaIntervalo(bytes);
}

// Behind texts that may hold any byte, what no log has there: an interval, and small or erased bytes.
bool llevaCabecera(Bytes bytes) {
    if (bytes.size() % kBytesBloque != 0 || !llevaIntervalo(bytes)) return false;
    const auto resto =
        bytes.first(std::min(bytes.size(), registro_config::kCabecera)).subspan(registro_config::kIntervalo);
    return std::ranges::any_of(resto, [](std::uint8_t b) { return noEsTexto(b) || b == 0xFF; });
}

// The text of what begins with UTF-16's mark, with "?" for all that is not ASCII.
std::optional<std::string> textoUtf16(Bytes bytes) {
    const auto texto = comoTexto(bytes);
    const bool menorDelante = texto.starts_with("\xFF\xFE");
    if (!menorDelante && !texto.starts_with("\xFE\xFF")) return std::nullopt;
    std::string ascii;
    ascii.reserve(bytes.size() / 2);
    for (std::size_t i = 2; i + 1 < bytes.size(); i += 2) {
        const auto bajo = bytes[menorDelante ? i : i + 1];
        const auto alto = bytes[menorDelante ? i + 1 : i];
        ascii += alto == 0 && bajo < 0x80 ? static_cast<char>(bajo) : '?';
    }
    return ascii;
}

// A text has a stamp by chance only.
bool casiTodoMuestras(Bytes bytes) {
    std::size_t cuantas = 0;
    recorrerRegistros(bytes, [&](std::size_t, BytesMuestraConst) { ++cuantas; });
    return 2 * cuantas >= bytes.size() / registro_muestra::kBytes - kPrimeraRanura;
}

// Lines of text to the end. A memory without a control character, an erased record or a sample is none; what
// does not reach its samples may be one's beginning, whose number and interval tell.
bool esTexto(Bytes bytes) {
    const auto texto = comoTexto(bytes);
    const auto deTexto = [](std::uint8_t b) { return !noEsTexto(b) && b != 0x7F && b != 0xFF; };
    const auto letra = [](unsigned char c) { return c < 0x80 && std::isalnum(c) != 0; };
    if (texto.find_first_of("\r\n") == std::string_view::npos || !std::ranges::all_of(bytes, deTexto) ||
        !std::ranges::any_of(bytes, letra))
        return false;
    const bool soloCabecera = bytes.size() < (kPrimeraRanura + 1) * registro_muestra::kBytes;
    return soloCabecera ? !empiezaPorSerie(bytes) || !llevaIntervalo(bytes) : !casiTodoMuestras(bytes);
}

// How other kinds begin, all of them long or with what is no serial number.
constexpr std::pair<std::string_view, std::string_view> kComienzos[] = {
    {"\x89PNG\r\n\x1A\n", "una imagen PNG"},
    {"\xFF\xD8\xFF\xE0", "una foto JPEG"},
    {"\xFF\xD8\xFF\xE1", "una foto JPEG"},
    {"%PDF-1.", "un documento PDF"},
    {"%PDF-2.", "un documento PDF"},
    {"PK\x03\x04", "un archivo comprimido o una planilla"},
    {"\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", "una planilla"},
    {"\x1F\x8B\x08", "un archivo comprimido"},
    {std::string_view("\xFD"
                      "7zXZ\0",
                      6),
     "un archivo comprimido"},
    {"\x28\xB5\x2F\xFD", "un archivo comprimido"},
    {"BZh91AY&SY", "un archivo comprimido"},
    {std::string_view("SQLite format 3\0", 16), "una base de datos"},
    {"PGDMP", "una base de datos"},
    {"\x7F"
     "ELF",
     "un programa"},
    {"GIF87a", "una imagen GIF"},
    {"GIF89a", "una imagen GIF"},
    // An editor's mark.
    {"\xEF\xBB\xBF", "un texto"},
};

// A folder packed into one file begins with a name.
bool esPaquete(Bytes bytes) {
    constexpr std::size_t kDonde = 257;
    constexpr std::string_view kMarca = "ustar";
    return bytes.size() > kDonde && comoTexto(bytes).substr(kDonde).starts_with(kMarca);
}

}  // namespace

// No text's first line goes on like this. The spreadsheets' own formats begin otherwise; further down a table
// holds whatever the logger's texts do. As long as a memory only a memory is.
bool pareceImagen(Bytes bytes) {
    if (bytes.size() < kBytesSerie || sinCeros(bytes).empty()) return false;
    if (bytes.size() == kBytesMemoria)
        return std::ranges::any_of(bytes, [](std::uint8_t b) { return noEsTexto(b) || b == 0xFF; });
    if (llevaCabecera(bytes)) return true;
    const auto linea = comoTexto(bytes).substr(0, comoTexto(bytes).find("\r\n"));
    return std::ranges::any_of(bytes.first(linea.size()), noEsTexto) &&
           (empiezaPorSerie(bytes) || tieneFormaDeMemoria(bytes));
}

bool pareceDiario(Bytes bytes) {
    if (bytes.size() > kBytesMemoria) return true;
    if (llevaCabecera(bytes)) return false;
    const auto resto = sinCeros(bytes);
    const auto fin = std::ranges::find(resto, std::uint8_t{'\n'});
    // Behind its texts a header is erased in part, or holds the clock's small numbers.
    return fin != resto.end() &&
           std::none_of(resto.begin(), fin, [](std::uint8_t b) { return noEsTexto(b) || b == 0xFF; });
}

// Two names that no table has, in whatever order and behind whatever an editor put before them.
bool pareceFicha(Bytes bytes) {
    const auto ancho = textoUtf16(bytes);
    const auto texto = ancho ? std::string_view(*ancho) : comoTexto(bytes);
    const auto tiene = [&](const char* nombre) {
        return texto.find('"' + std::string(nombre) + '"') != std::string_view::npos;
    };
    return tiene(miembros_ficha::kDescargada) && tiene(miembros_ficha::kErroresDeLinea);
}

std::string_view otraClase(Bytes bytes) {
    if (bytes.size() < kBytesSerie) return {};
    for (const auto& [comienzo, clase] : kComienzos) {
        if (comoTexto(bytes).starts_with(comienzo)) return clase;
    }
    if (esPaquete(bytes)) return "un archivo tar";
    const auto ancho = textoUtf16(bytes);
    const Bytes llano =
        ancho ? Bytes(reinterpret_cast<const std::uint8_t*>(ancho->data()), ancho->size()) : bytes;
    if (llano.size() < kBytesSerie) return {};
    // A data sheet may be a single line without its end.
    const bool texto = esTexto(llano) || (!pareceImagen(llano) && pareceFicha(llano));
    return texto ? "un texto" : std::string_view{};
}

std::string quejaDeOtraClase(Bytes bytes) {
    const auto clase = otraClase(bytes);
    if (clase.empty()) return {};
    return fmt::format(
        "no es la memoria de un registrador, sino {}: dé el archivo base (.rgt) de una descarga", clase);
}

}  // namespace telvane
