// The commands, one file each: what it is called, which options it has, and what it does.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "cli/consola.h"
#include "cli/entorno_cli.h"

namespace CLI {
class App;
}

namespace telvane {

struct ContextoCli {
    EntornoCli& entorno;
    Consola& consola;
    std::vector<std::string> com;  // values of --com
    std::function<void()> orden;   // the chosen command, once the arguments were read; throws ErrorCli
};

void declararPuertos(CLI::App& app, ContextoCli& contexto);
void declararBuscar(CLI::App& app, ContextoCli& contexto);
void declararConfiguracion(CLI::App& app, ContextoCli& contexto);
void declararEnLinea(CLI::App& app, ContextoCli& contexto);
void declararDescargar(CLI::App& app, ContextoCli& contexto);
void declararConvertir(CLI::App& app, ContextoCli& contexto);
void declararConfigurar(CLI::App& app, ContextoCli& contexto);
void declararSerie(CLI::App& app, ContextoCli& contexto);

}  // namespace telvane
