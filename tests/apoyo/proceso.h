// A program of ours run by a test: its output is read and its end awaited with deadlines, never by sleeping.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace telvane {

class Proceso {
   public:
    using Plazo = std::chrono::milliseconds;
    // Far beyond what a loaded machine needs; passing it is a failure of the test.
    static constexpr Plazo kPlazo{20'000};

    // orden: path of the program, then its arguments. entorno: "NAME=VALUE" set on top of our own
    // environment. Standard input is empty. Throws std::system_error when it cannot be started.
    explicit Proceso(const std::vector<std::string>& orden, const std::vector<std::string>& entorno = {});
    Proceso(const Proceso&) = delete;
    Proceso& operator=(const Proceso&) = delete;
    // Kills what still runs.
    ~Proceso();

    // The next whole line of standard output, without its end; nullopt when it ends or the time passes first.
    std::optional<std::string> linea(Plazo plazo = kPlazo);
    void senal(int numero);
    // Exit status of the ended program, 128 + N after signal N; nullopt when it still runs after the time.
    std::optional<int> terminar(Plazo plazo = kPlazo);
    // What it wrote so far and was not taken as a line; complete after terminar().
    const std::string& salida() const { return salida_.texto; }
    const std::string& errores() const { return errores_.texto; }
    pid_t pid() const { return pid_; }

   private:
    struct Tubo {
        int descriptor = -1;
        std::string texto;
    };
    bool atender(std::chrono::steady_clock::time_point fin, bool hastaElFinal);
    static void leer(Tubo& tubo);
    bool lineaEntera() const;

    pid_t pid_ = -1;
    int pidfd_ = -1;
    std::optional<int> estado_;
    Tubo salida_;
    Tubo errores_;
};

// Turns until the condition holds, looking at it every few milliseconds; false when the time passes first.
// For what another process does to the file system, which tells nobody.
bool esperarA(const std::function<bool()>& condicion, std::chrono::milliseconds plazo = Proceso::kPlazo);

}  // namespace telvane
