#include "loggerconfig/serie.h"

#include "link/siguiendo.h"
#include "ui/textos.h"

namespace telvane {

namespace {

constexpr int kDigitos = 8;

}  // namespace

bool EscrituraSerie::alTeclear(int& tecla) {
    enlace_.estado.respuesta = false;
    enlace_.forma.Text10.maxLength = kDigitos;
    if (tecla == kTeclaRetroceso) return false;
    if (tecla == kTeclaIntro) return true;
    if (tecla < '0' || tecla > '9') tecla = 0;
    return false;
}

Tarea<> EscrituraSerie::enviar() {
    auto& forma = enlace_.forma;
    serie_ = empacarSerie(forma.Text10.text());
    // The buffer of the last read's digits is overwritten by what is sent.
    config_.digitosSerie = forma.Text10.text();
    config_.digitosSerie.resize(kDigitos, '0');
    forma.Text10.enabled = false;
    forma.Label1.enabled = true;
    forma.Label1.caption = "comienzo transmision";
    co_await enlace_.despertar();
    enlace_.abrir(enlace_.canales.MSComm3);
    co_await enlace_.esperarRespuesta();
    if (enlace_.estado.respuesta) co_return;
    co_await enlace_.avisar(textos::kNoHayEquipo);
    enlace_.canales.MSComm3.PortOpen(false);
    forma.Text10.enabled = true;
    enlace_.ofrecerReconexion();
}

void EscrituraSerie::alComunicar() {
    auto& canal = enlace_.canales.MSComm3;
    if (canal.CommEvent() != suceso::kRecibido) return;
    enlace_.estado.respuesta = true;
    canal.InputByte();
    const auto paso = pasoSerie(enlace_.estado.contador++, serie_);
    if (paso.respuesta) siguiendo([&] { canal.Output(*paso.respuesta); });
    if (paso.fin) {
        terminar();
    } else if (paso.inesperado) {
        siguiendo([&] { canal.InBufferCount(0); });
        enlace_.forma.imprimir("otro valor serie");
        canal.PortOpen(false);
    }
}

void EscrituraSerie::terminar() {
    auto& forma = enlace_.forma;
    forma.Label1.enabled = true;
    forma.Label1.caption = "fin transmision";
    forma.Label1.caption = "Nº Enviado  " + forma.Text10.text();
    forma.Text10.enabled = true;
    forma.Text10.text = "";
    enlace_.estado.contador = 0;
    enlace_.canales.MSComm3.PortOpen(false);
}

}  // namespace telvane
