// A channel's counts as the report's texts show them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "informe/canales.h"
#include "informe/cuentas.h"
#include "informe/texto_html.h"

namespace telvane::informe {

// Values marked salto or fijo are in it; notes and legends say what it means.
constexpr std::string_view asterisco(bool marcado) {
    return marcado ? "*" : "";
}

// "-3.20*"; there must be a value.
inline std::string minimoDe(const CuentaCanal& cuenta, Canal canal) {
    return numero(std::int64_t{cuenta.minimo}, decimalesDe(canal)).append(asterisco(cuenta.minimoMarcado));
}
inline std::string maximoDe(const CuentaCanal& cuenta, Canal canal) {
    return numero(std::int64_t{cuenta.maximo}, decimalesDe(canal)).append(asterisco(cuenta.maximoMarcado));
}

}  // namespace telvane::informe
