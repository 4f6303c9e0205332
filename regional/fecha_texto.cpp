#include "regional/fecha_texto.h"

#include <charconv>

namespace telvane {

namespace {

// A whole number made of digits only.
std::optional<int> numero(std::string_view cifras) {
    int valor = 0;
    const auto leido = std::from_chars(cifras.data(), cifras.data() + cifras.size(), valor);
    if (cifras.empty() || cifras.front() == '-' || leido.ec != std::errc{} ||
        leido.ptr != cifras.data() + cifras.size()) {
        return std::nullopt;
    }
    return valor;
}

}  // namespace

std::optional<FechaCivil> leerFechaCorta(std::string_view texto) {
    const auto primera = texto.find('/');
    const auto segunda =
        primera == std::string_view::npos ? std::string_view::npos : texto.find('/', primera + 1);
    if (segunda == std::string_view::npos) return std::nullopt;
    const auto dia = numero(texto.substr(0, primera));
    const auto mes = numero(texto.substr(primera + 1, segunda - primera - 1));
    const auto anio = numero(texto.substr(segunda + 1));
    if (!dia || !mes || !anio || texto.size() - segunda - 1 != 4) return std::nullopt;
    const FechaCivil fecha{*anio, *mes, *dia};
    // A date that exists is the one that the calendar does not carry on from.
    if (*mes < 1 || *mes > 12 || *dia < 1 || fechaConAcarreo(*anio, *mes, *dia) != fecha) return std::nullopt;
    return fecha;
}

}  // namespace telvane
