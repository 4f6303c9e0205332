// The texts that stand in a source, each with the code that leads to it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace telvane::arquitectura {

struct Literal {
    std::string texto;     // its escapes undone; neighbours that make one literal are joined
    std::string contexto;  // the code before it since the last ";", "{" or "}", literals shown as ""
};

// Comments, includes and character literals are passed over.
std::vector<Literal> leerLiterales(std::string_view fuente);

}  // namespace telvane::arquitectura
