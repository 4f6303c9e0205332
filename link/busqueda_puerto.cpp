#include "link/busqueda_puerto.h"

#include <array>
#include <limits>

#include <fmt/format.h>

#include "link/protocolo.h"
#include "link/siguiendo.h"
#include "ui/textos.h"

namespace telvane {

namespace {

// 32768 in the 16 bits of the property.
constexpr std::int16_t kBufer = std::numeric_limits<std::int16_t>::min();

constexpr std::string_view kNoHayConexion =
    "   No Hay Conexion Con Equipo Registrador\r\n"
    "(si el problema persiste consultar Servicio Tecnico)\r\n"
    "        servicio.tecnico@veltra.example     ";

// The answer's button code, as the text in which the form keeps it.
std::string codigo(Boton boton) {
    return std::to_string(static_cast<int>(boton));
}

}  // namespace

void prepararCanal(MSComm& canal, int umbral) {
    siguiendo([&] { canal.Break(false); });
    siguiendo([&] { canal.Handshaking(0); });
    siguiendo([&] { canal.InputLen(1); });
    siguiendo([&] { canal.InputMode(MSComm::Modo::binario); });
    siguiendo([&] { canal.RThreshold(umbral); });
    siguiendo([&] { canal.SThreshold(0); });
    siguiendo([&] { canal.Settings(std::string(kAjustesLinea)); });
    siguiendo([&] { canal.InBufferSize(kBufer); });
    siguiendo([&] { canal.OutBufferSize(kBufer); });
    siguiendo([&] { canal.EOFEnable(false); });
    siguiendo([&] { canal.DTREnable(false); });
    siguiendo([&] { canal.DSRHolding(false); });
    siguiendo([&] { canal.RTSEnable(false); });
    siguiendo([&] { canal.CTSHolding(false); });
    siguiendo([&] { canal.CDHolding(false); });
    siguiendo([&] { canal.InBufferCount(0); });
}

void BusquedaPuerto::prepararCanales() {
    auto& c = enlace_.canales;
    for (auto* canal : {&c.MSComm1, &c.MSComm2, &c.MSComm3, &c.MSComm4, &c.MSComm5, &c.MSComm6}) {
        siguiendo([&] { canal->CommPort(enlace_.estado.puertoPrueba); });
    }
    prepararCanal(c.MSComm6, kUmbralMarco);
    prepararCanal(c.MSComm5, kUmbralByte);
    prepararCanal(c.MSComm4, kUmbralByte);
    prepararCanal(c.MSComm3, kUmbralByte);
    prepararCanal(c.MSComm2, kUmbralByte);
    prepararCanal(c.MSComm1, kUmbralSonda);
}

Tarea<> BusquedaPuerto::alReconectar() {
    enlace_.forma.Command1.enabled = false;
    co_await puerto();
}

Tarea<> BusquedaPuerto::puerto() {
    auto& estado = enlace_.estado;
    estado.puertoPrueba = 0;
    estado.respuesta = false;
    // A serial number write that stalled left its field closed.
    enlace_.forma.Text10.enabled = true;
    const auto quiere = co_await preguntar(
        enlace_.dialogos, Mensaje("Quiere conectarse con Registrador Veltra", Botones::aceptarCancelar));
    estado.opcion = codigo(quiere);
    if (quiere == Boton::cancelar) {
        enlace_.forma.Command1.caption = std::string(textos::kConectar);
        co_return;
    }
    while (++estado.puertoPrueba <= kUltimoPuerto) {
        if (co_await sondear()) {
            co_await encontrado();
            co_return;
        }
        enlace_.canales.MSComm1.PortOpen(false);
    }
    co_await noEncontrado();
}

// One candidate: the probe byte, then at most 1 s for a first event and 2 s more for the whole answer. A port
// that cannot be opened is as silent as one without a logger.
Tarea<bool> BusquedaPuerto::sondear() {
    auto& estado = enlace_.estado;
    auto& canal = enlace_.canales.MSComm1;
    prepararCanales();
    siguiendo([&] { canal.PortOpen(true); });
    siguiendo([&] { canal.Output(kSonda); });
    estado.contador = 0;
    co_await enlace_.esperar(kEsperaSuceso, [&] { return canal.CommEvent() == suceso::kRecibido; });
    co_await enlace_.esperarRespuesta(kEsperaSonda);
    co_return estado.respuesta;
}

Tarea<> BusquedaPuerto::encontrado() {
    auto& estado = enlace_.estado;
    auto& forma = enlace_.forma;
    estado.respuesta = false;
    enlace_.canales.MSComm1.PortOpen(false);
    estado.numPuerto = static_cast<std::int16_t>(enlace_.canales.MSComm1.CommPort());
    const auto texto = fmt::format(" Conexion en COM {}  @ {} bps ", estado.numPuerto, kBaudios);
    estado.opcion = codigo(co_await preguntar(enlace_.dialogos, Mensaje(texto)));
    forma.Command1.enabled = false;
    forma.Command1.caption = texto;
    estado.respuesta = true;
    co_await pulsarConfiguracion_();
}

Tarea<> BusquedaPuerto::noEncontrado() {
    enlace_.canales.MSComm1.PortOpen(false);
    enlace_.estado.opcion = codigo(
        co_await preguntar(enlace_.dialogos, Mensaje(kNoHayConexion, Botones::aceptar, Icono::critico)));
    enlace_.ofrecerReconexion();
    presenta_.descargar();
}

}  // namespace telvane
