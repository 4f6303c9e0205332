// A configuration that is to be sent back is read until two readings agree: the line has no checksum, and a
// byte damaged on its way here would become the logger's own.
#pragma once

#include <chrono>

#include "cli/registrador_cli.h"
#include "consola/consola.h"
#include "loggerconfig/datos_config.h"
#include "platform/reloj.h"

namespace telvane {

struct LecturaFirme {
    DatosConfig datos;
    // Monotonic, when the reading ended: the logger's clock stood as it says that reading's length before.
    std::chrono::nanoseconds momento{0};
};

// Texts and interval: what the writing of a serial number leaves alone.
bool mismosAjustes(const DatosConfig& unos, const DatosConfig& otros);

// conReloj: whether the clocks have to agree too, allowing for the time between the readings. Throws as
// RegistradorCli::leerConfiguracion does, and ErrorCli (fallo) when too many readings contradict each other.
LecturaFirme leerFirme(RegistradorCli& registrador, Consola& consola, const Reloj& reloj, bool conReloj);

}  // namespace telvane
