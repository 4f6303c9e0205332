// What a program asks of the system, call by call, and what becomes of it when one of them fails or is its
// last.
#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace telvane {

struct LlamadaAlSistema {
    std::string nombre;
    std::size_t vez;    // the how manieth of its name since the program began, from 1
    std::string texto;  // as the tracer tells it
};

struct FinDePrograma {
    std::optional<int> estado;  // 128 + N after signal N
    std::string errores;
};

// Empty when programs can be traced here, otherwise why not.
std::string porQueNoSeTraza();

// What runs a program whose first call of this name begins so much later. The tracer is not its parent:
// signals and exit status are the program's own.
std::vector<std::string> conDemora(const std::string& llamada, std::chrono::milliseconds cuanto);

// Runs the program to its end and tells its calls from the first one on whose text holds this, and how it
// ended.
std::vector<LlamadaAlSistema> trazar(const std::vector<std::string>& orden, const std::string& desde,
                                     const std::vector<std::string>& entorno = {});
// Runs it with that call tampered with: "error=ENOSPC", "signal=SIGKILL".
FinDePrograma conLlamada(const std::vector<std::string>& orden, const LlamadaAlSistema& llamada,
                         const std::string& efecto, const std::vector<std::string>& entorno = {});

}  // namespace telvane
