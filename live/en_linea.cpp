#include "live/en_linea.h"

#include <array>
#include <utility>

#include "link/protocolo.h"
#include "link/siguiendo.h"
#include "live/marco_en_linea.h"
#include "ui/textos.h"

namespace telvane {

namespace {

constexpr std::string_view kParar = "PARAR";

}  // namespace

void DatosEnLinea::parar() {
    auto& forma = enlace_.forma;
    forma.Text60.visible = false;
    forma.Command4.caption = std::string(textos::kEnLinea);
    enLinea_ = false;
    for (auto* boton : {&forma.Command43, &forma.Command13, &forma.Command2, &forma.configuracion}) {
        boton->enabled = true;
    }
}

Tarea<> DatosEnLinea::empezar() {
    auto& forma = enlace_.forma;
    auto& estado = enlace_.estado;
    auto& canal = enlace_.canales.MSComm6;
    if (!estado.respuesta) {
        co_await enlace_.avisarSinEquipo();
        co_return;
    }
    for (auto* boton : {&forma.Command33, &forma.Command43, &forma.Command13, &forma.Command2,
                        &forma.Command3, &forma.configuracion}) {
        boton->enabled = false;
    }
    enLinea_ = true;
    forma.Command4.caption = std::string(kParar);
    // The last reading of an earlier run is not a reading of this one.
    forma.Text60.text = "";
    forma.Text60.visible = true;
    estado.respuesta = false;
    // The frame that was asked for before the stop may still come: it is the first of this run. Asked for
    // again, its rest would stand before the next one, and shift every frame from then on.
    if (canal.PortOpen()) {
        co_await enlace_.esperar(Turno::kQuietud, [&] { return estado.respuesta || !enLinea_; });
        if (estado.respuesta || !enLinea_) co_return;
    }
    abrir();
    co_await enlace_.esperar(kEsperaMarco, [&] { return estado.respuesta || !enLinea_; });
    // Who stopped it meanwhile knows that nothing came.
    if (estado.respuesta || !enLinea_) co_return;
    // Before the message: a late answer must start nothing behind it.
    canal.PortOpen(false);
    co_await enlace_.avisarSinEquipo();
}

void DatosEnLinea::alComunicar() {
    auto& canal = enlace_.canales.MSComm6;
    if (canal.CommEvent() != suceso::kRecibido) return;
    enlace_.estado.respuesta = true;
    std::array<std::uint8_t, kBytesMarco> bytes{};
    for (auto& byte : bytes) byte = canal.InputByte();
    textoLinea_ = lineasMarco(textosMarco(decodificarMarco(bytes)));
    enlace_.forma.Text60.text = textoLinea_;
    const bool sobraban = std::exchange(sobran_, canal.InBufferCount() > 0);
    if (sobran_) enlace_.forma.imprimir("falta");
    const bool dudoso = propios_.juzgar(bytes) == CanalesPropios::Juicio::dudoso;
    if (!enLinea_) {
        cerrar();
    } else if (sobraban || (dudoso && !sobran_)) {
        // Out of step, or it seems so: a byte too many that comes behind its frame is seen by nobody then.
        silencio_ = bucle_.alarma(kRestoMarco, [this] { pedirEnPaso(); });
    } else {
        pedir();
    }
}

void DatosEnLinea::abrir() {
    silencio_.reset();
    sobran_ = false;
    propios_ = {};
    enlace_.abrir(enlace_.canales.MSComm6, kSonda);
}

void DatosEnLinea::pedir() {
    silencio_.reset();
    siguiendo([&] { enlace_.canales.MSComm6.Output(kSonda); });
}

// The logger has fallen silent: what waits is left over, and the next frame begins with its first byte.
void DatosEnLinea::pedirEnPaso() {
    auto& canal = enlace_.canales.MSComm6;
    if (!canal.PortOpen()) return;
    if (canal.InBufferCount() > 0) {
        propios_.interrumpir();
        if (!sobran_) enlace_.forma.imprimir("falta");
    }
    sobran_ = false;
    if (!enLinea_) {
        cerrar();
        return;
    }
    siguiendo([&] { canal.InBufferCount(0); });
    pedir();
}

void DatosEnLinea::cerrar() {
    auto& canal = enlace_.canales.MSComm6;
    silencio_.reset();
    enlace_.forma.Text60.text = "";
    siguiendo([&] { canal.InBufferCount(0); });
    canal.PortOpen(false);
}

}  // namespace telvane
