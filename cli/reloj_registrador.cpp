#include "cli/reloj_registrador.h"

#include "regional/formatos.h"

namespace telvane {

using namespace std::chrono_literals;

FechaHora masTarde(const FechaHora& momento, std::chrono::nanoseconds cuanto) {
    const auto total = momento.deDia + cuanto;
    const auto dias = std::chrono::floor<std::chrono::days>(total);
    const auto civil =
        fechaConAcarreo(momento.anio, momento.mes, momento.dia + static_cast<int>(dias.count()));
    return {civil.anio, civil.mes, civil.dia, total - dias};
}

std::chrono::nanoseconds adelanto(const FechaHora& a, const FechaHora& b) {
    using namespace std::chrono;
    const auto instante = [](const FechaHora& m) {
        const year_month_day fecha{year(m.anio), month(static_cast<unsigned>(m.mes)),
                                   day(static_cast<unsigned>(m.dia))};
        return local_days(fecha).time_since_epoch() + m.deDia;
    };
    return instante(a) - instante(b);
}

std::chrono::nanoseconds distancia(const FechaHora& a, const FechaHora& b) {
    return std::chrono::abs(adelanto(a, b));
}

}  // namespace telvane
