#include "loggerconfig/serie.h"

#include "link/siguiendo.h"
#include "ui/teclas.h"
#include "ui/textos.h"

namespace telvane {

int teclaDeSerie(int tecla) {
    const bool cifra = tecla >= '0' && tecla <= '9';
    return cifra || tecla == kTeclaRetroceso || tecla == kTeclaIntro ? tecla : 0;
}

void EscrituraSerie::alTeclear() {
    enlace_.estado.respuesta = false;
    enlace_.forma.Text10.maxLength = static_cast<int>(kDigitosSerie);
}

Tarea<> EscrituraSerie::enviar() {
    auto& forma = enlace_.forma;
    enviada_ = forma.Text10.text();
    serie_ = empacarSerie(enviada_);
    // The buffer of the last read's digits is overwritten by what is sent.
    config_.digitosSerie = forma.Text10.text();
    config_.digitosSerie.resize(kDigitosSerie, '0');
    entera_ = true;
    forma.Text10.enabled = false;
    forma.Label1.enabled = true;
    forma.Label1.caption = "comienzo transmision";
    const bool responde = co_await enlace_.empezar(enlace_.canales.MSComm3);
    if (!responde) forma.Text10.enabled = true;
}

void EscrituraSerie::alComunicar() {
    auto& canal = enlace_.canales.MSComm3;
    if (canal.CommEvent() != suceso::kRecibido) return;
    enlace_.estado.respuesta = true;
    canal.InputByte();
    // The form's counter begins with 0 here, that of the steps with 1.
    const auto paso = pasoSerie(++enlace_.estado.contador, serie_);
    if (paso.respuesta) entera_ = siguiendo([&] { canal.Output(*paso.respuesta); }) && entera_;
    if (paso.hito == HitoEnvio::fin && entera_) {
        terminar();
    } else if (paso.hito == HitoEnvio::fin) {
        // What did not go out is not shown as sent; the line says why.
        enlace_.estado.contador = 0;
        canal.PortOpen(false);
        enlace_.forma.Text10.enabled = true;
    } else if (paso.hito == HitoEnvio::fueraDePaso) {
        siguiendo([&] { canal.InBufferCount(0); });
        enlace_.forma.imprimir("otro valor serie");
        canal.PortOpen(false);
    }
}

void EscrituraSerie::terminar() {
    auto& forma = enlace_.forma;
    forma.Label1.enabled = true;
    forma.Label1.caption = "fin transmision";
    forma.Label1.caption = "Nº Enviado  " + enviada_;
    forma.Text10.enabled = true;
    forma.Text10.text = "";
    enlace_.estado.contador = 0;
    enlace_.canales.MSComm3.PortOpen(false);
}

}  // namespace telvane
