// How a console program ends.
#pragma once

#include <stdexcept>
#include <string>

namespace telvane {

enum class CodigoSalida : int {
    hecho = 0,
    fallo = 1,
    malUso = 2,
    sinRegistrador = 3,
    interrumpido = 130,
};

// Ends the running command with this code; the text, in Spanish and with the remedy where there is one, goes
// to standard error.
class ErrorCli : public std::runtime_error {
   public:
    ErrorCli(CodigoSalida codigo, const std::string& que) : std::runtime_error(que), codigo_(codigo) {}
    CodigoSalida codigo() const { return codigo_; }

   private:
    CodigoSalida codigo_;
};

// The line asks for what cannot be: told as wrong usage, with where to look behind it.
class ErrorUso : public ErrorCli {
   public:
    explicit ErrorUso(const std::string& que) : ErrorCli(CodigoSalida::malUso, que) {}
};

// For options that do not go together. Throws ErrorUso.
inline void exigirUso(bool bien, const std::string& que) {
    if (!bien) throw ErrorUso(que);
}

}  // namespace telvane
