// The standard streams as the process was given them.
#pragma once

#include <exception>
#include <functional>
#include <string>
#include <string_view>

namespace telvane {

// Standard descriptors; -1 for one that was closed at the start.
struct FlujosHeredados {
    int entrada;
    int salida;
    int errores;
};

// Before anything is opened: takes the numbers of closed ones, so that no file, port or display of ours gets
// them and with them what is meant for a terminal. From here on a reader that goes away and a file that
// reaches the session's limit are errors of writing like any other.
FlujosHeredados flujosHeredados();

// All of the text, in pieces that a descriptor takes without making its writer wait; -1 takes none. Whoever
// reads may be slow: meanwhile parar is asked, and its true ends the wait. 0, or an errno value: EINTR where
// it was ended.
int escribirTodo(int descriptor, std::string_view texto, const std::function<bool()>& parar = {});

// What ends a program, as its last line; where memory is short, without any. parar: as above.
void decirFinal(int descriptor, std::string_view programa, const std::exception& error,
                const std::function<bool()>& parar = {}) noexcept;

// What is told when the standard input could not be read, and what to do.
std::string quejaDeEntrada(int motivo);
// What is told when the standard output took less than all, and what to do.
std::string quejaDeSalida(int motivo);
// The same of work that is done all the same: hecho says so.
std::string quejaDeSalida(int motivo, std::string_view hecho);

}  // namespace telvane
