#include "loggerconfig/escritura.h"

#include <fmt/format.h>

#include "link/siguiendo.h"
#include "loggerconfig/datos_config.h"
#include "loggerconfig/pasos_escritura.h"
#include "regional/fecha_texto.h"
#include "ui/textos.h"

namespace telvane {

namespace {

constexpr std::string_view kBorrara =
    "SE BORRARAN TODOS LOS DATOS DE MEMORIA!  \r\n\r\n\r\nesta seguro de cambiarla? ";
constexpr std::string_view kErrorDatos = "error datos";
constexpr std::string_view kLeidaEntretanto =
    "se acaba de leer otra vez la configuración: no se envió nada, vuelva a cambiarla";
constexpr std::string_view kFechaIncorrecta = "Fecha incorrecta (ej. 31/12/2024)";
constexpr std::string_view kFaltaIntervalo = "Falta el intervalo de muestreo: elija uno";

}  // namespace

Tarea<> EscrituraConfig::alPulsar() {
    // An Enter that was meant for something else must not erase a memory.
    const auto seguro = co_await preguntar(
        enlace_.dialogos,
        Mensaje(kBorrara, Botones::aceptarCancelar, Icono::exclamacion).conPorDefecto(Boton::cancelar));
    enlace_.estado.tInicio = std::to_string(static_cast<int>(seguro));
    if (seguro == Boton::aceptar) co_await confirmado();
    edicion_.salirDeEdicion();
}

Tarea<> EscrituraConfig::confirmado() {
    const bool sePuede = co_await sePuedeEnviar();
    if (!sePuede) co_return;
    // A reading that stood still may have gone on to its end meanwhile: what stands there is not what the
    // operator was asked about.
    if (!edicion_.editando()) {
        enlace_.forma.imprimir(std::string(kLeidaEntretanto));
        co_return;
    }
    enviando_ = true;
    enlace_.forma.Check1.value = 0;
    prepararMensaje();
    // respuesta is not cleared first: what an earlier exchange left there ends the wait at once.
    co_await enlace_.empezar(enlace_.canales.MSComm5);
    enviando_ = false;
}

// The time is checked on leaving its field; sending with the keyboard alone must not go around that. What
// cannot be sent is told once, and stays as it was typed.
Tarea<bool> EscrituraConfig::sePuedeEnviar() {
    const bool hora = co_await edicion_.validarHora();
    if (!hora) co_return false;
    const auto fecha = leerFechaCorta(config_.fechaConfig);
    if (!fecha || !cabeEnElReloj(fecha->anio)) {
        const auto porQue =
            fecha ? "Fecha incorrecta: " + anioQueNoCabe(fecha->anio) : std::string(kFechaIncorrecta);
        co_await enlace_.avisar(porQue);
        co_return false;
    }
    for (const auto* campo : enlace_.forma.camposTexto()) {
        if (loTieneElRegistrador(campo->text())) continue;
        co_await enlace_.avisar(fmt::format("{}: {}", campo->nombreAccesible(), kCaracterAjeno));
        co_return false;
    }
    // No logger told one, its reading having broken off, and nobody chose one. Without a port nothing is sent
    // anyway, and that is what is told.
    if (config_.intervaloCodigo != 0 || enlace_.estado.numPuerto == 0) co_return true;
    co_await enlace_.avisar(kFaltaIntervalo);
    co_return false;
}

void EscrituraConfig::prepararMensaje() {
    auto& forma = enlace_.forma;
    ConfigAEnviar config;
    const auto campos = forma.camposTexto();
    for (std::size_t i = 0; i < campos.size(); ++i) {
        campos[i]->text = rellenado(campos[i]->text(), kAnchos[i]);
        config.textos[i] = campos[i]->text();
    }
    const auto segundos = config_.horaConfig.count();
    config.intervaloCodigo = config_.intervaloCodigo;
    config.hora = static_cast<int>(segundos / 3600);
    config.minuto = static_cast<int>(segundos / 60 % 60);
    config.segundo = static_cast<int>(segundos % 60);
    const auto fecha = leerFechaCorta(config_.fechaConfig).value();
    config.dia = fecha.dia;
    config.mes = fecha.mes;
    config.anio = fecha.anio;
    config_.mensajeConfig = mensajeConfig(config);
}

void EscrituraConfig::alComunicar() {
    auto& canal = enlace_.canales.MSComm5;
    if (canal.CommEvent() != suceso::kRecibido) return;
    enlace_.estado.respuesta = true;
    canal.InputByte();
    const auto paso = pasoEscritura(++enlace_.estado.contador, config_.mensajeConfig);
    if (paso.respuesta) siguiendo([&] { canal.Output(*paso.respuesta); });
    if (paso.hito == HitoEnvio::fin) {
        canal.PortOpen(false);
        terminarTransferencia();
    } else if (paso.hito == HitoEnvio::fueraDePaso) {
        terminarTransferencia();
        enlace_.forma.imprimir(std::string(kErrorDatos));
        siguiendo([&] { canal.InBufferCount(0); });
        canal.PortOpen(false);
    }
}

void EscrituraConfig::terminarTransferencia() {
    auto& forma = enlace_.forma;
    for (auto* boton : {&forma.Command43, &forma.Command13, &forma.configuracion, &forma.Command2}) {
        boton->enabled = true;
    }
    forma.Command3.enabled = false;
    forma.Timer1.enabled = true;
    // Of a transfer that stood still while the operator went on editing.
    edicion_.dejar();
}

}  // namespace telvane
