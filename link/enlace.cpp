#include "link/enlace.h"

#include "link/siguiendo.h"
#include "ui/textos.h"

namespace telvane {

Tarea<> Enlace::despertar() {
    tomarLinea(canales.MSComm1, kSonda);
    co_await esperas.sinCeder(kDespertar);
    canales.MSComm1.PortOpen(false);
}

void Enlace::abrir(MSComm& canal, std::uint8_t apertura) {
    // What an earlier exchange left in respuesta is no answer on a line that is not there.
    if (!tomarLinea(canal, apertura)) estado.respuesta = false;
    estado.contador = 0;
}

// One refused step ends it: without the port that the search found, no other one may be opened.
bool Enlace::tomarLinea(MSComm& canal, std::uint8_t primero) const {
    const bool tomada = siguiendo([&] {
        canal.CommPort(estado.numPuerto);
        canal.PortOpen(true);
        canal.InBufferCount(0);
        canal.Output(primero);
    });
    if (!tomada) canal.PortOpen(false);
    return tomada;
}

Tarea<> Enlace::esperarRespuesta(std::chrono::milliseconds plazo) {
    co_await esperar(plazo, [this] { return estado.respuesta; });
}

Tarea<> Enlace::esperar(std::chrono::milliseconds plazo, Esperas::Condicion condicion) {
    const Turno::Espera espera(turno, plazo);
    estado.tInicio = segundosComoTexto(reloj.segundosDelDia());
    co_await esperas.hasta(estado.tInicio, plazo, std::move(condicion));
}

Tarea<bool> Enlace::empezar(MSComm& canal) {
    co_await despertar();
    abrir(canal);
    co_await esperarRespuesta();
    if (estado.respuesta) co_return true;
    canal.PortOpen(false);
    co_await avisarSinEquipo();
    co_return false;
}

Tarea<> Enlace::avisar(std::string_view texto) {
    co_await preguntar(dialogos, Mensaje(texto));
}

void Enlace::ofrecerReconexion() {
    forma.Command1.enabled = true;
    forma.Command1.caption = std::string(textos::kConectar);
}

Tarea<> Enlace::avisarSinEquipo() {
    co_await avisar(textos::kNoHayEquipo);
    ofrecerReconexion();
}

}  // namespace telvane
