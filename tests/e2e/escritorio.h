// A desktop of the test's own: an X display and a session bus, both gone with it.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tests/apoyo/proceso.h"
#include "tests/e2e/registrador_simulado.h"

namespace telvane {

class Escritorio {
   public:
    // Throws std::runtime_error when one of them does not start.
    Escritorio();

    // "NAME=VALUE" for a program that is to run here, with home, settings and data of its own.
    const std::vector<std::string>& entorno() const { return entorno_; }
    // What one of them holds; empty for a name that is not among them.
    std::string variable(const std::string& nombre) const;
    // The display goes away under the programs on it.
    void apagarPantalla() { pantalla_.reset(); }
    const std::string& pantalla() const { return nombrePantalla_; }  // ":1"
    const std::string& bus() const { return bus_; }
    std::filesystem::path carpeta(const std::string& nombre) const { return carpeta_ / nombre; }

   private:
    CarpetaTemporal carpeta_;
    std::vector<std::string> entorno_;
    std::unique_ptr<Proceso> pantalla_;
    std::unique_ptr<Proceso> sesion_;
    std::string nombrePantalla_;
    std::string bus_;
};

}  // namespace telvane
