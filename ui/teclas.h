// Codes of the keys that a field's filter sees and that are no printable character.
#pragma once

namespace telvane {

inline constexpr int kTeclaRetroceso = 8;
inline constexpr int kTeclaIntro = 13;

}  // namespace telvane
