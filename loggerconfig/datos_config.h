// The logger's configuration record: one serial number, one user, one place, one sampling interval, one
// clock.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "link/protocolo.h"

namespace telvane {

// Offsets in bytes within the record, on the line (after the two acknowledges) and at the head of the memory
// image.
namespace registro_config {
inline constexpr std::size_t kSerie = 0;        // 4 bytes, packed decimal, most significant digit first
inline constexpr std::size_t kUsuario = 4;      // 30 characters
inline constexpr std::size_t kUbicacion = 34;   // 35
inline constexpr std::size_t kLatitud = 69;     // 15
inline constexpr std::size_t kLongitud = 84;    // 15
inline constexpr std::size_t kAltitud = 99;     // 5
inline constexpr std::size_t kIntervalo = 104;  // 1, packed decimal minutes
inline constexpr std::size_t kReloj = 105;      // hour, minute, second, day, month, year; packed decimal
inline constexpr std::size_t kFin = kBytesConfig;
inline constexpr std::size_t kCabecera = 432;  // header of the memory image: the record, then reserved bytes
}  // namespace registro_config

// The five texts, in the order of the record.
enum class CampoTexto : std::uint8_t { usuario, ubicacion, latitud, longitud, altitud };
inline constexpr std::array<int, 5> kAnchos = {30, 35, 15, 15, 5};

// Whether the logger can hold every character of a UTF-8 text, one byte each. Any other would arrive as "?".
bool loTieneElRegistrador(std::string_view texto);
// Why a text with another one is not sent; after the name of its field.
inline constexpr std::string_view kCaracterAjeno = "hay un carácter que el registrador no tiene: cámbielo";

// Packed decimal. A byte becomes two characters, each nibble plus the code of "0": 0x9A gives "9:".
std::array<char, 2> digitosBcd(std::uint8_t byte);
// 0 to 99.
constexpr std::uint8_t empacarBcd(int valor) {
    return static_cast<std::uint8_t>((valor / 10) * 16 + valor % 10);
}

// Years that the logger's clock can hold. A higher byte reads back as a wrong date, and the byte of an
// earlier year is that of a later one.
inline constexpr int kPrimerAnioReloj = 2000;
inline constexpr int kUltimoAnioReloj = 2064;
constexpr bool cabeEnElReloj(int anio) {
    return anio >= kPrimerAnioReloj && anio <= kUltimoAnioReloj;
}
// Why a year that is not one of them is not sent.
std::string anioQueNoCabe(int anio);

// The six sampling intervals.
struct Intervalo {
    std::uint8_t codigo;
    int minutos;
    std::string_view texto;
};
inline constexpr std::array<Intervalo, 6> kIntervalos = {
    {{0x01, 1, "1"}, {0x05, 5, "5"}, {0x10, 10, "10"}, {0x15, 15, "15"}, {0x30, 30, "30"}, {0x60, 60, "60"}}};
// nullopt for any other code.
std::optional<std::size_t> indiceIntervalo(std::uint8_t codigo);

// The record, decoded as it arrives.
struct DatosConfig {
    std::string Nserie;                 // 8 digit characters
    std::array<std::string, 5> textos;  // UTF-8, padding kept; index with CampoTexto
    std::uint8_t intervaloCodigo = 0;
    // hour, minute, second, day, month, year as two digit characters, or, when the byte was refused, the raw
    // value in decimal.
    std::array<std::string, 6> reloj;

    std::string& operator[](CampoTexto campo) { return textos[static_cast<std::size_t>(campo)]; }
    const std::string& operator[](CampoTexto campo) const { return textos[static_cast<std::size_t>(campo)]; }
};

// The serial number's digits read as a number: leading decimal digits, in single precision.
float numeroDeSerie(std::string_view digitos);

// A logger that carries the evaporation channels: 2080000 <= n < 2080100.
constexpr bool llevaEvaporacion(float numeroSerie) {
    return numeroSerie >= 2080000.0f && numeroSerie < 2080100.0f;
}

// "Nro  : 12345678"
std::string lineaSerie(std::string_view digitos);

// Summary after a read, lines ended by CR LF: interval in minutes, the serial line, the five texts.
std::string resumenTrasLectura(std::string_view intervalo, std::string_view lineaSerie,
                               const std::array<std::string_view, 5>& campos);

// The same of a record that was read.
std::string textoConfig(const DatosConfig& datos);

// The text of a memory image's header, built byte by byte as `config` does. A value: copy it, test it.
struct TextoDeCabecera {
    std::string digitosSerie;
    std::string intervalo;
    std::string texto;     // textoConfig so far; only appended to
    std::string recogido;  // the field being collected

    // contador: position of the byte, 0 for the header's first. False: beyond the header.
    bool config(std::int32_t contador, std::uint8_t byte);
    // Whether the logger that wrote the header carries the evaporation channels.
    bool llevaEvaporacion() const { return telvane::llevaEvaporacion(numeroDeSerie(digitosSerie)); }
};

// The record at the head of an image; its clock as two characters a byte, whatever they say.
DatosConfig datosDeCabecera(std::span<const std::uint8_t> imagen);

// Of a whole image: its header's 432 bytes.
TextoDeCabecera leerCabecera(std::span<const std::uint8_t> imagen);

}  // namespace telvane
