#include "link/enlace.h"

#include "link/protocolo.h"
#include "link/siguiendo.h"
#include "ui/textos.h"

namespace telvane {

Tarea<> Enlace::despertar() {
    siguiendo([&] { canales.MSComm1.CommPort(estado.numPuerto); });
    siguiendo([&] { canales.MSComm1.PortOpen(true); });
    siguiendo([&] { canales.MSComm1.Output(kSonda); });
    co_await esperas.sinCeder(kDespertar);
    canales.MSComm1.PortOpen(false);
}

void Enlace::abrir(MSComm& canal) {
    siguiendo([&] { canal.CommPort(estado.numPuerto); });
    siguiendo([&] { canal.PortOpen(true); });
    siguiendo([&] { canal.InBufferCount(0); });
    siguiendo([&] { canal.Output(kApertura); });
    estado.contador = 0;
}

Tarea<> Enlace::esperarRespuesta() {
    estado.tInicio = segundosComoTexto(reloj.segundosDelDia());
    co_await esperas.hasta(estado.tInicio, kEsperaRespuesta, [this] { return estado.respuesta; });
}

Tarea<> Enlace::avisar(std::string_view texto) {
    co_await preguntar(dialogos, Mensaje(texto));
}

void Enlace::ofrecerReconexion() {
    forma.Command1.enabled = true;
    forma.Command1.caption = std::string(textos::kConectar);
}

}  // namespace telvane
