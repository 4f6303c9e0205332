#include "consola/proceso_consola.h"

#include "platform/senales_de_fin.h"

namespace telvane {

SenalesConsola::SenalesConsola(Bucle& bucle, EntornoConsola& entorno)
    : entorno_(entorno),
      senales_(bucle, senalesQueTerminan(), [&entorno](int senal) { entorno.senal = senal; }) {
    entorno.senalEnEspera = [this] { return senales_.enEspera(); };
}

SenalesConsola::~SenalesConsola() {
    entorno_.senalEnEspera = [] { return false; };
}

}  // namespace telvane
