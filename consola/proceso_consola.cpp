#include "consola/proceso_consola.h"

#include <csignal>

namespace telvane {

SenalesConsola::SenalesConsola(Bucle& bucle, EntornoConsola& entorno)
    : entorno_(entorno),
      senales_(bucle, {SIGINT, SIGTERM, SIGHUP}, [&entorno](int senal) { entorno.senal = senal; }) {
    entorno.senalEnEspera = [this] { return senales_.enEspera(); };
}

SenalesConsola::~SenalesConsola() {
    entorno_.senalEnEspera = [] { return false; };
}

}  // namespace telvane
