// telvane-sim on a pty, in a folder of its own that goes with it.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "tests/apoyo/carpeta_temporal.h"
#include "tests/apoyo/proceso.h"

namespace telvane {

class RegistradorSimulado {
   public:
    // Ready to answer once constructed. opciones: more of telvane-sim's. Throws std::runtime_error when it
    // does not start.
    explicit RegistradorSimulado(const std::vector<std::string>& opciones = kSinPausa);
    static inline const std::vector<std::string> kSinPausa = {"--baudios", "0"};
    // Its memory as it is kept in a file.
    std::string memoria() const;
    std::filesystem::path archivo() const { return carpeta_ / "memoria.rgt"; }
    // Where its port is linked.
    const std::filesystem::path& enlace() const { return enlace_; }
    // The value of --com that makes it COM1.
    std::string com() const { return "1=" + enlace_.string(); }

   private:
    CarpetaTemporal carpeta_;
    std::filesystem::path enlace_;
    std::unique_ptr<Proceso> proceso_;
};

}  // namespace telvane
