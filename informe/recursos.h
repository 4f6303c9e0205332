// Style and script of the page, put in when the program is built, and the hashes by which the page's policy
// lets them in.
#pragma once

#include <string>
#include <string_view>

namespace telvane::informe::recursos {

std::string_view estilo();
std::string_view guion();
// "sha256-...", of exactly these bytes.
std::string huellaEstilo();
std::string huellaGuion();

}  // namespace telvane::informe::recursos
