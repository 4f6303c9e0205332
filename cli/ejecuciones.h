// When the download of a station ran last and runs next: systemd knows.
#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace telvane {

// Runs systemctl with these arguments and gives its standard output; nullopt: the machine does not run on it.
using Systemctl = std::function<std::optional<std::string>(const std::vector<std::string>&)>;

struct Ejecuciones {
    bool encendida = false;  // its timer waits for the next run
    bool enMarcha = false;
    std::optional<std::chrono::sys_seconds> ultima;  // when the last one began
    std::optional<std::chrono::sys_seconds> proxima;
    std::string resultado;  // of the last one, in systemd's words: "success", "exit-code", ...
    int codigo = 0;         // its exit status, or the signal that ended it
    bool porSenal = false;
};

// unidades: without ".timer" and ".service". Of one that systemd does not know all is empty. nullopt: nobody
// can be asked.
std::optional<std::map<std::string, Ejecuciones>> ejecucionesDe(const Systemctl& systemctl,
                                                                const std::vector<std::string>& unidades);

// Timers of stations, without ".timer", that systemd starts with the machine or has in hand now. Empty where
// nobody can be asked.
std::vector<std::string> temporizadoresDeEstaciones(const Systemctl& systemctl);

}  // namespace telvane
