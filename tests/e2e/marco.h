// What a window manager does when the user closes a window by its frame.
#pragma once

#include <string>

namespace telvane {

// Asks the topmost window with this title, on that display (":1"), to close. False: there is none yet.
bool cerrarPorElMarco(const std::string& pantalla, const std::string& titulo);

}  // namespace telvane
