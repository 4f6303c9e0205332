// The configuration read, byte by byte: what to store and what to answer. No I/O, no form.
#pragma once

#include <cstdint>
#include <optional>

#include "loggerconfig/datos_config.h"

namespace telvane {

// What a byte completed.
enum class HitoLectura : std::uint8_t {
    ninguno,
    serie,         // Nserie has its 8 digits
    texto,         // one character joined a text: campo says which
    intervalo,     // intervaloCodigo was set
    hora,          // the time slots are complete and the second was accepted
    horaMala,      // an hour, minute or second was refused; its slot holds the raw value
    fechaMala,     // the same for day, month or year
    fin,           // last byte, year accepted
    finFechaMala,  // last byte, year refused
    fueraDePaso    // counter out of step: nothing to answer, the exchange is over
};

struct PasoLectura {
    HitoLectura hito = HitoLectura::ninguno;
    std::optional<CampoTexto> campo;
    std::optional<std::uint8_t> respuesta;  // byte to send
};

// contador: 1 for the first byte received (2 acknowledges, then the record at 3 to 113).
inline constexpr std::int32_t kContadorFinLectura = 113;
PasoLectura pasoLectura(std::int32_t contador, std::uint8_t byte, DatosConfig& datos);

// Clock slots as seconds of the day and as a date, overflowing as the calendar does; each slot is read as a
// number.
std::int64_t segundosDeReloj(const std::array<std::string, 6>& reloj);
struct DiaDeReloj {
    int anio;
    int mes;
    int dia;
};
DiaDeReloj diaDeReloj(const std::array<std::string, 6>& reloj);

}  // namespace telvane
