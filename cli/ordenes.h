// The commands, one file each: what it is called, which options it has, and what it does.
#pragma once

#include <array>
#include <functional>
#include <string>
#include <vector>

#include "cli/entorno_cli.h"
#include "consola/consola.h"
#include "platform/argumentos.h"

namespace telvane {

struct ContextoCli {
    EntornoCli& entorno;
    Consola& consola;
    std::vector<std::string> com;  // values of --com
    std::function<void()> orden;   // the chosen command, once the arguments were read; throws ErrorCli
};

// All of them, and what they share.
void declararOrdenes(Argumentos& argumentos, ContextoCli& contexto);

void declararPuertos(Argumentos& argumentos, ContextoCli& contexto);
void declararBuscar(Argumentos& argumentos, ContextoCli& contexto);
void declararConfiguracion(Argumentos& argumentos, ContextoCli& contexto);
void declararEnLinea(Argumentos& argumentos, ContextoCli& contexto);
void declararDescargar(Argumentos& argumentos, ContextoCli& contexto);
// Why the command above does not understand these options of somebody else's line, its base file left out;
// empty: it does.
std::string motivoOpcionesDescargar(const std::vector<std::string>& palabras);
void declararConvertir(Argumentos& argumentos, ContextoCli& contexto);
void declararConfigurar(Argumentos& argumentos, ContextoCli& contexto);
void declararEstaciones(Argumentos& argumentos, ContextoCli& contexto);
void declararSerie(Argumentos& argumentos, ContextoCli& contexto);

// Each in its place in the help.
inline constexpr std::array kDeclaraciones{
    declararPuertos,   declararBuscar,     declararConfiguracion, declararEnLinea,    declararDescargar,
    declararConvertir, declararConfigurar, declararSerie,         declararEstaciones,
};

}  // namespace telvane
