// The current user's regional settings, under their full names.
#pragma once

#include <stdexcept>
#include <string>

namespace telvane {

class ErrorRegistro : public std::runtime_error {
   public:
    using std::runtime_error::runtime_error;
};

class Registro {
   public:
    virtual ~Registro() = default;
    // Full name of a value, e.g. "HKEY_CURRENT_USER\Control Panel\International\sDecimal". Both throw
    // ErrorRegistro, with the reason in Spanish, when the value cannot be read or written.
    virtual std::string RegRead(const std::string& nombre) = 0;
    virtual void RegWrite(const std::string& nombre, const std::string& valor) = 0;
};

}  // namespace telvane
