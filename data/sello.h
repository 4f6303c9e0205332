// The time stamp at the head of a sample record: hour, minute, second, day, month, year in packed decimal.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "data/muestra.h"
#include "loggerconfig/datos_config.h"
#include "regional/formatos.h"

namespace telvane {

// Which stamps are good. One decoder, two rule sets.
enum class Perfil : std::uint8_t {
    estricto,  // years 2001 to 2019, nibble bounds only; a bad second record takes the first line of its
               // block along
    ampliado   // years 2000 to 2099, real dates and times only; a good first record stays
};

// The name that an option of our programs gives it. motivoPerfil: empty when there is such a name.
inline std::string motivoPerfil(const std::string& texto) {
    return texto == "estricto" || texto == "ampliado" ? "" : "debe ser estricto o ampliado";
}
inline Perfil leerPerfil(const std::string& texto) {
    return texto == "ampliado" ? Perfil::ampliado : Perfil::estricto;
}

namespace sello {

// The six bytes side by side in one word, hour lowest, so that one addition tests all of them.
constexpr std::uint64_t palabra(std::uint8_t hora, std::uint8_t minuto, std::uint8_t segundo,
                                std::uint8_t dia, std::uint8_t mes, std::uint8_t anio) {
    return hora | std::uint64_t{minuto} << 8 | std::uint64_t{segundo} << 16 | std::uint64_t{dia} << 24 |
           std::uint64_t{mes} << 32 | std::uint64_t{anio} << 40;
}
constexpr std::uint64_t enCadaUno(std::uint8_t valor) {
    return palabra(valor, valor, valor, valor, valor, valor);
}

constexpr std::uint64_t palabra(BytesMuestraConst r) {
    const std::uint64_t ocho = r[0] | std::uint64_t{r[1]} << 8 | std::uint64_t{r[2]} << 16 |
                               std::uint64_t{r[3]} << 24 | std::uint64_t{r[4]} << 32 |
                               std::uint64_t{r[5]} << 40 | std::uint64_t{r[6]} << 48 |
                               std::uint64_t{r[7]} << 56;
    return ocho & enCadaUno(0xFF);
}

// Whether each nibble, alone in its byte, is below its bound (1 to 16).
constexpr bool bajo(std::uint64_t nibbles, std::uint64_t cotas) {
    constexpr std::uint64_t kAlto = enCadaUno(0x80);
    return ((nibbles + (kAlto - cotas)) & kAlto) == 0;
}

// Whether the bytes picked by the mask 0xFF are all different from zero, given that each is below 0x80.
constexpr bool noCero(std::uint64_t bytes, std::uint64_t cuales) {
    constexpr std::uint64_t kAlto = enCadaUno(0x80);
    return (((bytes & ~kAlto) + enCadaUno(0x7F)) & cuales & kAlto) == (cuales & kAlto);
}

// Last day of the month, both as raw bytes; February without its 29th. 0 for a byte that is no month.
constexpr auto kUltimoDia = [] {
    constexpr std::array<std::uint8_t, 12> kDias = {0x31, 0x28, 0x31, 0x30, 0x31, 0x30,
                                                    0x31, 0x31, 0x30, 0x31, 0x30, 0x31};
    std::array<std::uint8_t, 256> tabla{};
    for (std::size_t mes = 1; mes <= kDias.size(); ++mes) tabla[mes / 10 * 16 + mes % 10] = kDias[mes - 1];
    return tabla;
}();

constexpr int valor(std::uint8_t byte) {
    return byte / 16 * 10 + byte % 16;
}

// Packed decimal grows with its number, so raw bytes can be compared. Only for a stamp whose nibbles are
// decimal.
constexpr bool fechaReal(BytesMuestraConst r) {
    using namespace registro_muestra;
    if (r[kDia] <= kUltimoDia[r[kMes]]) [[likely]]
        return true;
    return r[kMes] == 0x02 && r[kDia] == 0x29 && valor(r[kAnio]) % 4 == 0;  // 2000 is a leap year as well
}

constexpr std::uint8_t kHoraDeMas = 0x24;
constexpr int kHorasDelDia = 24;

// Whether the record's stamp is good. The bounds of the strict profile are on the tens alone: hours to 29,
// days to 39 and months to 19 pass.
constexpr bool bueno(BytesMuestraConst r, Perfil perfil) {
    constexpr std::uint64_t kNibble = enCadaUno(0x0F);
    const std::uint64_t bytes = palabra(r);
    if (!bajo(bytes & kNibble, enCadaUno(10))) return false;
    const std::uint64_t decenas = bytes >> 4 & kNibble;
    if (perfil == Perfil::estricto) {
        return bajo(decenas, palabra(3, 6, 6, 4, 2, 2)) && noCero(bytes, palabra(0, 0, 0, 0xFF, 0xFF, 0xFF));
    }
    return bajo(decenas, palabra(3, 6, 6, 4, 2, 10)) && noCero(bytes, palabra(0, 0, 0, 0xFF, 0xFF, 0)) &&
           r[registro_muestra::kHora] < kHoraDeMas && fechaReal(r);
}

// Whether the record was never written, or was erased: a stamp all 0xFF or all 0x00.
constexpr bool borrado(BytesMuestraConst r) {
    return palabra(r) == 0 || palabra(r) == enCadaUno(0xFF);
}

// Date and time of a good stamp. Days and months beyond the calendar carry into the date, hours beyond 23 do
// not.
inline Fecha fecha(BytesMuestraConst r) {
    using namespace registro_muestra;
    const Fecha dicha{2000 + valor(r[kAnio]), valor(r[kMes]), valor(r[kDia])};
    if (fechaReal(r)) [[likely]]
        return dicha;
    return fechaConAcarreo(dicha.anio, dicha.mes, dicha.dia);
}
inline Hora hora(BytesMuestraConst r) {
    return {valor(r[0]) % kHorasDelDia, valor(r[1]), valor(r[2])};
}

constexpr auto kDosCifras = [] {
    std::array<std::array<char, 2>, 256> tabla{};
    for (unsigned b = 0; b < tabla.size(); ++b) {
        tabla[b] = {static_cast<char>('0' + b / 16), static_cast<char>('0' + b % 16)};
    }
    return tabla;
}();

constexpr void dosCifras(char* p, std::uint8_t byte) {
    std::copy_n(kDosCifras[byte].data(), 2, p);
}

constexpr void escribirFecha(char* p, std::uint8_t dia, std::uint8_t mes, std::uint8_t anio) {
    dosCifras(p, dia);
    dosCifras(p + 3, mes);
    dosCifras(p + 8, anio);
}

[[gnu::noinline, gnu::cold]] inline void escribirFechaConAcarreo(char* p, BytesMuestraConst r) {
    const auto real = fecha(r);
    escribirFecha(p, empacarBcd(real.dia), empacarBcd(real.mes), empacarBcd(real.anio % 100));
}

// Writes a good stamp as "20/11/2019,17:04:09," and gives the place after it.
inline char* escribir(char* p, BytesMuestraConst r) {
    using namespace registro_muestra;
    std::copy_n("00/00/2000,00:00:00,", 20, p);
    escribirFecha(p, r[kDia], r[kMes], r[kAnio]);
    if (!fechaReal(r)) [[unlikely]]
        escribirFechaConAcarreo(p, r);
    const std::uint8_t hora = r[kHora];
    dosCifras(p + 11, hora < kHoraDeMas ? hora : static_cast<std::uint8_t>(hora - kHoraDeMas));
    dosCifras(p + 14, r[kHora + 1]);
    dosCifras(p + 17, r[kHora + 2]);
    return p + 20;
}

}  // namespace sello

}  // namespace telvane
