// What a command that talks to the logger starts with: the ports of --com and the logger found on one of
// them.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "cli/entorno_cli.h"
#include "cli/registrador_cli.h"
#include "consola/consola.h"

namespace telvane {

class SesionCli {
   public:
    // com: the values of --com. Throws ErrorUso.
    SesionCli(EntornoCli& entorno, Consola& consola, const std::vector<std::string>& com);
    SesionCli(const SesionCli&) = delete;
    SesionCli& operator=(const SesionCli&) = delete;

    RegistradorCli& registrador() { return registrador_; }
    // See RegistradorCli::buscar; tells which devices of --com are not there.
    int buscar();
    // Device behind a number; empty where the map does not know it.
    std::filesystem::path dispositivo(int numero) const { return mapa_.dispositivo(numero).value_or(""); }

   private:
    Consola& consola_;
    MapaCom mapa_;
    std::unique_ptr<Puertos> puertos_;
    RegistradorCli registrador_;
};

// The map of --com. Throws ErrorUso naming the wrong value.
MapaCom leerMapa(const EntornoCli& entorno, const std::vector<std::string>& com);

}  // namespace telvane
