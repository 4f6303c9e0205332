// telvane-sim on a pty, in a folder of its own that goes with it.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "apoyo/proceso.h"

namespace telvane {

class CarpetaPropia {
   public:
    CarpetaPropia();
    CarpetaPropia(const CarpetaPropia&) = delete;
    CarpetaPropia& operator=(const CarpetaPropia&) = delete;
    ~CarpetaPropia();
    std::filesystem::path operator/(const std::string& nombre) const { return ruta_ / nombre; }

   private:
    std::filesystem::path ruta_;
};

class RegistradorSimulado {
   public:
    // Ready to answer once constructed; unpaced. Throws std::runtime_error when it does not start.
    RegistradorSimulado();
    // The value of --com that makes it COM1.
    std::string com() const { return "1=" + enlace_.string(); }

   private:
    CarpetaPropia carpeta_;
    std::filesystem::path enlace_;
    std::unique_ptr<Proceso> proceso_;
};

}  // namespace telvane
