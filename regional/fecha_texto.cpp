#include "regional/fecha_texto.h"

#include "platform/numero.h"

namespace telvane {

namespace {

constexpr std::size_t kCifrasAnio = 4;

// A whole number made of digits only, of no more than a year has.
std::optional<int> numero(std::string_view cifras) {
    if (cifras.size() > kCifrasAnio || cifras.starts_with('-')) return std::nullopt;
    return numeroDe<int>(cifras);
}

}  // namespace

std::optional<Fecha> leerFechaCorta(std::string_view texto) {
    const auto primera = texto.find('/');
    const auto segunda =
        primera == std::string_view::npos ? std::string_view::npos : texto.find('/', primera + 1);
    if (segunda == std::string_view::npos) return std::nullopt;
    const auto dia = numero(texto.substr(0, primera));
    const auto mes = numero(texto.substr(primera + 1, segunda - primera - 1));
    const auto anio = numero(texto.substr(segunda + 1));
    if (!dia || !mes || !anio || texto.size() - segunda - 1 != kCifrasAnio) return std::nullopt;
    const Fecha fecha{*anio, *mes, *dia};
    // A date that exists is the one that the calendar does not carry on from.
    if (fechaConAcarreo(*anio, *mes, *dia) != fecha) return std::nullopt;
    return fecha;
}

}  // namespace telvane
