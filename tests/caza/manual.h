// What the manual says of the tool's messages.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace telvane {

// The texts of the tables of chapter 13, cut where values stand in them: each of at least two words.
std::vector<std::string> trozosExplicados(std::string_view manual);

// Whether a message holds one of them.
bool estaExplicado(std::string_view mensaje);

}  // namespace telvane
