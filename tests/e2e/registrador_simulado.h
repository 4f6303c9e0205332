// telvane-sim on a pty, in a folder of its own that goes with it.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "apoyo/carpeta_temporal.h"
#include "apoyo/proceso.h"

namespace telvane {

class RegistradorSimulado {
   public:
    // Ready to answer once constructed; unpaced. Throws std::runtime_error when it does not start.
    RegistradorSimulado();
    // Its memory as it is kept in a file.
    std::string memoria() const;
    // The value of --com that makes it COM1.
    std::string com() const { return "1=" + enlace_.string(); }

   private:
    CarpetaTemporal carpeta_;
    std::filesystem::path enlace_;
    std::unique_ptr<Proceso> proceso_;
};

}  // namespace telvane
