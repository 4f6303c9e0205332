// The configuration read, byte by byte: what to store and what to answer. No I/O, no form.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "link/paso.h"
#include "link/protocolo.h"
#include "loggerconfig/datos_config.h"
#include "regional/formatos.h"

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

// The line that tells a refused clock byte; empty for the other milestones.
std::string_view avisoDe(HitoLectura hito);

struct PasoLectura : Paso<HitoLectura> {
    std::optional<CampoTexto> campo;  // of HitoLectura::texto
};

// contador: 1 for the first byte received (2 acknowledges, then the record at 3 to 113).
inline constexpr auto kContadorFinLectura = static_cast<std::int32_t>(kRespuestasLectura);
PasoLectura pasoLectura(std::int32_t contador, std::uint8_t byte, DatosConfig& datos);

// Whether every slot holds an accepted byte whose nibbles are decimal. A refused byte stays there as its
// value, which may have two digits as well.
bool relojAceptado(const std::array<std::string, 6>& reloj);
// Clock slots as seconds of the day and as a date, each slot read as a number: a month or a day may lie
// beyond its range.
std::int64_t segundosDeReloj(const std::array<std::string, 6>& reloj);
Fecha diaDeReloj(const std::array<std::string, 6>& reloj);

}  // namespace telvane
