// Reading a short date that a user typed.
#pragma once

#include <optional>
#include <string_view>

#include "regional/formatos.h"

namespace telvane {

// "31/12/2024": day, month and four-digit year of a date that exists; nullopt for anything else.
std::optional<Fecha> leerFechaCorta(std::string_view texto);

}  // namespace telvane
