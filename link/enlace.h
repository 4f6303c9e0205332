// What every exchange with the logger shares: the six channels, the state of the form, and the waits.
#pragma once

#include <cstdint>
#include <string>

#include "link/mscomm.h"
#include "link/protocolo.h"
#include "link/turno.h"
#include "platform/dialogos.h"
#include "platform/esperas.h"
#include "platform/reloj.h"
#include "ui/forma_inicio.h"

namespace telvane {

// One channel per kind of exchange, all on the port that the search found.
struct Canales {
    explicit Canales(Puertos& puertos)
        : MSComm1(puertos, tenencia),
          MSComm2(puertos, tenencia),
          MSComm3(puertos, tenencia),
          MSComm4(puertos, tenencia),
          MSComm5(puertos, tenencia),
          MSComm6(puertos, tenencia) {}

    Tenencia tenencia;
    MSComm MSComm1;  // port probe and wake-up
    MSComm MSComm2;  // configuration read
    MSComm MSComm3;  // serial number write
    MSComm MSComm4;  // memory download
    MSComm MSComm5;  // configuration write
    MSComm MSComm6;  // live data
};

// The form's shared state.
struct EstadoEnlace {
    bool respuesta = false;         // the logger has answered; every receive handler sets it
    std::int16_t numPuerto = 0;     // port on which the logger answered
    std::int16_t puertoPrueba = 0;  // candidate of the running search, 0 to 13
    std::int32_t contador = 0;      // bytes or events of the running exchange
    std::string tInicio;            // start second of the current wait
    std::string opcion;             // code of the last answer to a message box
};

struct Enlace {
    FormaInicio& forma;
    Canales& canales;
    EstadoEnlace& estado;
    const Reloj& reloj;
    Esperas& esperas;
    Dialogos& dialogos;
    Turno& turno;

    // Wakes the logger: 0xBE on MSComm1, two seconds without yielding, then whatever it said is dropped.
    Tarea<> despertar();
    // Opens the exchange's channel on numPuerto and sends its opening byte; counters start at 0. Where that
    // cannot be done the channel stays closed, and nobody has answered.
    void abrir(MSComm& canal, std::uint8_t apertura = kApertura);
    // Notes the clock in tInicio and waits at most this long, yielding, for respuesta.
    Tarea<> esperarRespuesta(std::chrono::milliseconds plazo = kEsperaRespuesta);
    // The same for any condition.
    Tarea<> esperar(std::chrono::milliseconds plazo, Esperas::Condicion condicion);
    // The beginning that the exchanges of the configuration share: wakes the logger, opens the channel and
    // waits for respuesta. False: there was none, the channel is closed and the user was told.
    Tarea<bool> empezar(MSComm& canal);
    // A message box with this text and one button.
    Tarea<> avisar(std::string_view texto);
    // Command1 enabled, asking whether to connect.
    void ofrecerReconexion();
    // What the user is told and offered where no logger answered.
    Tarea<> avisarSinEquipo();

   private:
    bool tomarLinea(MSComm& canal, std::uint8_t primero) const;
};

}  // namespace telvane
