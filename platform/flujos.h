// The standard streams as the process was given them.
#pragma once

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

}  // namespace telvane
