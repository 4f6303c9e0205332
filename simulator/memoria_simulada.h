// The memory image of a simulated logger: its configuration at the head, a year of hourly records behind it.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "loggerconfig/datos_config.h"
#include "platform/reloj.h"
#include "simulator/clima.h"

namespace telvane {

struct ConfiguracionSimulada {
    std::string serie = "02080050";  // 8 digits
    // UTF-8, in the order of CampoTexto; filled with blanks on the right.
    std::array<std::string, kAnchos.size()> textos = {"INTA Estacion Experimental", "Finca Norte", "32 53 S",
                                                      "68 50 O", "  827"};
    std::uint8_t intervaloCodigo = 0x60;
};

// Where the records begin: the header is 432 bytes long, the first whole block behind it is block 7.
inline constexpr std::size_t kInicioRegistros = 7 * kBytesBloque;

// 262144 bytes: the header, then nothing (0xFF).
std::vector<std::uint8_t> memoriaVacia(const ConfiguracionSimulada& config, const FechaHora& reloj);
// The same, filled with hourly records from 2018-11-20 00:00:00 on; the header's clock is the last record's.
std::vector<std::uint8_t> memoriaSimulada(const Clima& clima, const ConfiguracionSimulada& config = {});

// Erases everything behind the configuration record, the header's reserved bytes included.
void borrarMuestras(std::span<std::uint8_t> imagen);
// Whether the four bytes of the serial number hold eight decimal digits; an erased header does not.
bool tieneSerie(std::span<const std::uint8_t> imagen);
// digitos: exactly 8 decimal digits.
void ponerSerie(std::span<std::uint8_t> imagen, std::string_view digitos);
void ponerConfiguracion(std::span<std::uint8_t> imagen, const ConfiguracionSimulada& config);
void ponerReloj(std::span<std::uint8_t> imagen, const FechaHora& reloj);

}  // namespace telvane
