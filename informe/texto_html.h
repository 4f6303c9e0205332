// Texts as they stand in a page.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "serie_temporal/instante.h"

namespace telvane::informe {

// Nothing in it is markup, whatever it is: element text and attribute values alike. Control characters, line
// and paragraph separators, marks that change the direction of writing, and what is no UTF-8 become U+FFFD;
// the blanks of a padded field at its ends go.
std::string deRegistrador(std::string_view texto);
// The same without the escapes of a page, for plain text.
std::string llanoDeRegistrador(std::string_view texto);

// "21.5": valor / 10^decimales with all its decimals.
std::string numero(std::int64_t valor, int decimales);
// Half away from zero of the decimal value.
std::string numero(double valor, int decimales);

// "20/11/2018", "17:04", "20/11/2018 17:04".
std::string fecha(Instante momento);
std::string hora(Instante momento);
std::string fechaHora(Instante momento);
// "nov"
std::string mesCorto(int mes);

}  // namespace telvane::informe
