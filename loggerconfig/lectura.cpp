#include "loggerconfig/lectura.h"

#include "link/siguiendo.h"
#include "regional/formatos.h"
#include "ui/textos.h"

namespace telvane {

namespace {

// A read is under way, or the port is to be tried again first.
void habilitarEdicion(FormaInicio& forma) {
    forma.Command3.enabled = false;
    forma.Command2.enabled = true;
}

}  // namespace

Tarea<> LecturaConfig::alPulsar() {
    auto& forma = enlace_.forma;
    presenta_.descargar();
    if (!enlace_.estado.respuesta) {
        co_await enlace_.avisarSinEquipo();
        co_return;
    }
    enlace_.estado.respuesta = false;
    datos_ = {};
    edicion_.dejar();
    for (auto* campo : forma.camposTexto()) campo->text = "";
    // A serial number write that stalled left its field closed.
    forma.Text10.enabled = true;
    const bool responde = co_await enlace_.empezar(enlace_.canales.MSComm2);
    if (!responde) forma.configuracion.enabled = true;
    habilitarEdicion(forma);
}

void LecturaConfig::alComunicar() {
    auto& canal = enlace_.canales.MSComm2;
    if (canal.CommEvent() != suceso::kRecibido) return;
    enlace_.estado.respuesta = true;
    const auto byte = canal.InputByte();
    const auto paso = pasoLectura(++enlace_.estado.contador, byte, datos_);
    mostrar(paso);
    if (paso.hito == HitoLectura::fueraDePaso) {
        abandonar();
        return;
    }
    if (paso.respuesta) siguiendo([&] { canal.Output(*paso.respuesta); });
    if (paso.hito == HitoLectura::fin || paso.hito == HitoLectura::finFechaMala) terminar();
}

void LecturaConfig::mostrar(const PasoLectura& paso) {
    auto& forma = enlace_.forma;
    config_.relojLeido = datos_.reloj;
    switch (paso.hito) {
        case HitoLectura::serie:
            config_.digitosSerie = datos_.Nserie;
            config_.numeroSerie = numeroDeSerie(datos_.Nserie);
            forma.Label4.caption = lineaSerie(datos_.Nserie);
            // Where this reading breaks off, the interval of the one before is sent to nobody: it may be
            // another logger's.
            config_.intervaloCodigo = 0;
            break;
        case HitoLectura::texto:
            forma.camposTexto()[static_cast<std::size_t>(*paso.campo)]->text = datos_[*paso.campo];
            break;
        case HitoLectura::intervalo:
            config_.intervaloCodigo = datos_.intervaloCodigo;
            if (const auto indice = indiceIntervalo(datos_.intervaloCodigo)) {
                config_.intervalo = std::string(kIntervalos[*indice].texto);
                mostrarSoloIntervalo(forma, datos_.intervaloCodigo);
            }
            break;
        case HitoLectura::hora:
            config_.horaConfig = std::chrono::seconds(segundosDeReloj(datos_.reloj));
            forma.MaskEdBox2.text = horaLarga(config_.horaConfig);
            break;
        case HitoLectura::horaMala:
        case HitoLectura::fechaMala:
        case HitoLectura::finFechaMala:
            forma.imprimir(std::string(avisoDe(paso.hito)));
            break;
        case HitoLectura::fin: {
            const auto dia = diaDeReloj(datos_.reloj);
            const auto civil = fechaConAcarreo(dia.anio, dia.mes, dia.dia);
            forma.fecha1.text = fechaCorta(civil.anio, civil.mes, civil.dia);
            config_.fechaConfig = forma.fecha1.text;
            break;
        }
        case HitoLectura::fueraDePaso:
            forma.imprimir(std::string(textos::kErrorContador));
            break;
        case HitoLectura::ninguno:
            break;
    }
}

void LecturaConfig::terminar() {
    auto& forma = enlace_.forma;
    enlace_.estado.contador = 0;
    forma.Timer1.enabled = true;
    forma.configuracion.enabled = true;
    enlace_.canales.MSComm2.PortOpen(false);
    if (edicion_.editando()) {
        // The read stood still while the operator went on editing; what stands there now is the logger's.
        edicion_.dejar();
        forma.Command2.enabled = true;
    }
    config_.textoConfig = resumenTrasLectura(
        config_.intervalo, forma.Label4.caption(),
        {forma.Text2.text(), forma.Text3.text(), forma.Text4.text(), forma.Text5.text(), forma.Text7.text()});
    datos_ = {};
}

void LecturaConfig::abandonar() {
    auto& canal = enlace_.canales.MSComm2;
    siguiendo([&] { canal.InBufferCount(0); });
    canal.PortOpen(false);
}

}  // namespace telvane
