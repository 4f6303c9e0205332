#include "cli/sesion_cli.h"

#include <fmt/format.h>

#include "consola/codigos_salida.h"
#include "link/direccion_tcp.h"
#include "platform/texto_visible.h"

namespace telvane {

SesionCli::SesionCli(EntornoCli& entorno, Consola& consola, const std::vector<std::string>& com)
    : consola_(consola),
      mapa_(leerMapa(entorno, com)),
      puertos_(entorno.abrirPuertos(mapa_)),
      registrador_(entorno, consola, *puertos_,
                   [this](int numero) { return esDireccionTcp(dispositivo(numero).native()); }) {}

int SesionCli::buscar() {
    for (const int numero : mapa_.numeros()) {
        if (!puertos_->existe(numero)) {
            consola_.aviso(fmt::format("COM{}: {} no existe: enchúfelo, o corrija --com", numero,
                                       nombreVisible(dispositivo(numero))));
        }
    }
    return registrador_.buscar();
}

MapaCom leerMapa(const EntornoCli& entorno, const std::vector<std::string>& com) {
    try {
        return MapaCom::deOpciones(com, entorno.raices);
    } catch (const ErrorPuerto& error) {
        throw ErrorUso(error.what());
    }
}

}  // namespace telvane
