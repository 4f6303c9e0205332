// A password that stands in an address: behind "://USER:" up to "@", and behind "password=". Whoever shows it
// shows "…" in its place, whatever its length, in a message and in JSON alike.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace telvane {

// A message as anybody may read it, each address in it without its passwords. A blank or a quote ends one.
std::string sinContrasenas(std::string_view mensaje);

// The same of a value that is one address to its end, blanks and quotes included; a file's name stays as it
// is.
std::string sinContrasena(std::string_view direccion);

// Of an argument of the line that the process was started with, which the system shows to everybody: each of
// their bytes as "*", for its length stays.
void ocultarContrasena(std::span<char> argumento);

}  // namespace telvane
