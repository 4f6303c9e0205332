// The check of the user's regional settings.
#pragma once

#include <array>
#include <string_view>

#include "platform/dialogos.h"
#include "platform/tarea.h"
#include "regional/registro.h"

namespace telvane {

inline constexpr std::string_view kClaveRegional = "HKEY_CURRENT_USER\\Control Panel\\International\\";

struct ValorRegional {
    std::string_view nombre;
    std::string_view exigido;
    std::string_view rotulo;
    int ordenEscritura;  // 1 to 8
};

// In the order in which they are checked.
inline constexpr std::array<ValorRegional, 8> kValoresRegionales = {{
    {"iDigits", "2", "Numero de Digitos Decimales: ", 6},
    {"sThousand", ",", "Separador de miles: ", 5},
    {"sDecimal", ".", "Separador Decimal: ", 4},
    {"sShortDate", "dd/MM/yyyy", "Formato de Fecha: ", 3},
    {"sTimeFormat", "HH:mm:ss", "Formato de Hora: ", 2},
    {"sList", ",", "Separador de Lista: ", 1},
    {"sMonDecimalSep", ".", "Separador Decimal Monetario: ", 7},
    {"sMonThousandSep", ",", "Separador de Miles Monetario: ", 8},
}};

// Insists on the eight values: offers to set them where one differs. False: the user refused, the program is
// to end. An ErrorRegistro leaves through it.
Tarea<bool> configregional(Registro& registro, Dialogos& dialogos);

}  // namespace telvane
