#include "app/inicio.h"

#include <optional>

#include "app/temporizador.h"
#include "data/archivo_base.h"
#include "data/descarga.h"
#include "data/exportacion.h"
#include "link/enlace.h"
#include "link/puerto.h"
#include "link/sucesos.h"
#include "live/en_linea.h"
#include "loggerconfig/edicion.h"
#include "loggerconfig/escritura.h"
#include "loggerconfig/estado_config.h"
#include "loggerconfig/lectura.h"
#include "loggerconfig/serie.h"
#include "platform/esperas.h"
#include "platform/tarea.h"
#include "platform/vigilia.h"
#include "regional/module1.h"
#include "ui/textos.h"

namespace telvane {

namespace {

std::string queDice(const std::exception_ptr& fallo) {
    try {
        std::rethrow_exception(fallo);
    } catch (const std::exception& error) {
        return error.what();
    } catch (...) {
        return "error desconocido";
    }
}

}  // namespace

// Members stand in the order in which they need each other; what is in flight (tareas) goes first at the end.
struct Inicio::Partes {
    Partes(Inicio& inicio, Entorno e);

    Tarea<> arranque();
    void conectarCanales();
    void conectarBotones();
    void conectarEdicion();
    void lanzar(Tarea<> tarea) { tareas.lanzar(std::move(tarea)); }
    void fallar(const std::exception_ptr& fallo) const { entorno.informeDeFallo(queDice(fallo)); }
    // A control whose click starts an operation.
    template <class Operacion>
    void alPulsar(Control& control, Operacion operacion) {
        control.alPulsar = [this, operacion] { lanzar(operacion()); };
    }

    Entorno entorno;
    Inicio& formas;
    FormaInicio& forma;
    Esperas esperas;
    Canales canales;
    EstadoEnlace estado;
    EstadoConfig config;
    EstadoDatos datos;
    Enlace enlace;
    Vigilia vigilia;

    LecturaConfig lectura;
    BusquedaPuerto busqueda;
    DatosEnLinea enLinea;
    Edicion edicion;
    EscrituraConfig escritura;
    EscrituraSerie serie;
    Exportacion exportacion;
    ArchivoBase archivoBase;
    Descarga descarga;

    // Running from start-up on, which disables both. Timer2 and Timer3 have no handler and never run.
    std::optional<Temporizador> timer1;
    std::optional<Temporizador> timer4;
    Tareas tareas;
};

Inicio::Partes::Partes(Inicio& inicio, Entorno e)
    : entorno(std::move(e)),
      formas(inicio),
      forma(inicio.forma),
      esperas(entorno.bucle, entorno.reloj, tareas),
      canales(entorno.puertos),
      datos(entorno.perfil),
      enlace{forma, canales, estado, entorno.reloj, esperas, entorno.dialogos},
      vigilia(entorno.bucle, entorno.inhibidor, std::string(textos::kPorQueDespierta)),
      lectura(enlace, config, inicio.presenta),
      busqueda(enlace, inicio.presenta, [this] { return lectura.alPulsar(); }),
      enLinea(enlace),
      edicion(enlace, config),
      escritura(enlace, config, edicion),
      serie(enlace, config),
      exportacion(enlace, config, datos, inicio.progress),
      archivoBase(enlace, config, datos, inicio.progress),
      descarga(enlace, datos, inicio.progress, vigilia,
               {.lanzar = [this](Tarea<> tarea) { lanzar(std::move(tarea)); },
                .guardarBase = [this] { archivoBase.guardarDescarga(); },
                .generargt = [this] { return exportacion.generargt(); }}),
      tareas([this](const std::exception_ptr& fallo) { fallar(fallo); }) {
    datos.carpetaBase = entorno.carpetaBase;
    entorno.bucle.alTerminarSuceso([this] { esperas.revisar(); });
    entorno.bucle.alFallar([this](const std::exception_ptr& fallo) { fallar(fallo); });
    conectarCanales();
    conectarBotones();
    conectarEdicion();
}

void Inicio::Partes::conectarCanales() {
    canales.MSComm1.alComunicar = [this] { alComunicarSonda(enlace); };
    canales.MSComm1.vigilarLinea(true);
    canales.MSComm2.alComunicar = [this] { lectura.alComunicar(); };
    canales.MSComm3.alComunicar = [this] { serie.alComunicar(); };
    canales.MSComm4.alComunicar = [this] { descarga.alComunicar(); };
    canales.MSComm5.alComunicar = [this] { escritura.alComunicar(); };
    canales.MSComm6.alComunicar = [this] { enLinea.alComunicar(); };
}

void Inicio::Partes::conectarBotones() {
    alPulsar(forma.Command1, [this] { return busqueda.alReconectar(); });
    alPulsar(forma.configuracion, [this] { return lectura.alPulsar(); });
    alPulsar(forma.Command4, [this] { return enLinea.alPulsar(); });
    alPulsar(forma.Command3, [this] { return escritura.alPulsar(); });
    alPulsar(forma.Command13, [this] { return descarga.alPulsar(); });
    alPulsar(forma.Command33, [this] { return exportacion.exportarEventos(); });
    alPulsar(forma.Command43, [this] { return archivoBase.importar(); });
    forma.salir.alPulsar = [this] { entorno.terminar(0); };
    forma.Command5.alPulsar = [this] { formas.coef.mostrar(); };
    formas.coef.Command1.alPulsar = [this] { formas.coef.descargar(); };
    formas.progress.Command45.alPulsar = [this] { descarga.alCancelar(); };
    forma.Timer1.alPulsar = [this] { edicion.alTictac(); };
    forma.Timer4.alPulsar = [this] { descarga.alTictac(); };
}

void Inicio::Partes::conectarEdicion() {
    forma.Command2.alPulsar = [this] { edicion.alCambiarConfiguracion(); };
    const auto opciones = forma.opciones();
    for (std::size_t i = 0; i < opciones.size(); ++i) {
        opciones[i]->alPulsar = [this, i] { edicion.alElegirIntervalo(i); };
    }
    forma.Check1.alPulsar = [this] { edicion.alTomarRelojPc(); };
    forma.fecha1.alCambiar = [this] { edicion.alCambiarFecha(); };
    forma.MaskEdBox2.alCambiar = [this] { edicion.alCambiarHora(); };
    forma.MaskEdBox2.alSalir = [this] { lanzar(edicion.alSalirDeHora()); };
    forma.Text10.alTeclear = [this](int& tecla) {
        if (!serie.alTeclear(tecla)) return;
        entorno.bucle.entregar([this] {
            if (forma.Text10.enabled()) lanzar(serie.enviar());
        });
    };
}

Tarea<> Inicio::Partes::arranque() {
    formas.progress.cargar();
    formas.progress.ProgressBar1.visible = false;
    if (!co_await configregional(entorno.registro, entorno.dialogos)) {
        entorno.terminar(0);
        co_return;
    }
    forma.Timer4.enabled = false;
    forma.mostrar();
    formas.presenta.mostrar();
    forma.Timer1.enabled = false;
    timer1.emplace(entorno.bucle, forma.Timer1);
    timer4.emplace(entorno.bucle, forma.Timer4);
    forma.Check1.visible = false;
    forma.Label3.visible = false;
    for (auto* campo : forma.camposTexto()) campo->locked = true;
    forma.Command3.enabled = false;
    forma.Command2.enabled = false;
    datos.ultimoBloque = kUltimoBloque;
    if (entorno.perfil == Perfil::ampliado) forma.imprimir("perfil ampliado");
    co_await busqueda.puerto();
}

Inicio::Inicio(Entorno entorno) : partes_(std::make_unique<Partes>(*this, std::move(entorno))) {}
Inicio::~Inicio() {
    partes_->entorno.bucle.alTerminarSuceso({});
    partes_->entorno.bucle.alFallar({});
}

void Inicio::cargar() {
    partes_->lanzar(partes_->arranque());
}

std::size_t Inicio::operacionesEnCurso() const {
    return partes_->tareas.enCurso();
}

void Inicio::pulsar(Control& control) {
    if (!control.enabled() || !control.visible()) return;
    // "Salir" ends the program from inside any wait, the one that does not yield included.
    if (&control == &forma.salir) {
        control.alPulsar();
        return;
    }
    partes_->entorno.bucle.entregar([this, &control] {
        // A click that a pause held back counts as made after it.
        if (!control.enabled() || !control.visible()) return;
        if (control.clase() == Clase::opcion) {
            for (auto* opcion : forma.opciones()) opcion->value = opcion == &control ? 1 : 0;
        }
        if (control.clase() == Clase::casilla) control.value = control.value() == 0 ? 1 : 0;
        if (control.alPulsar) control.alPulsar();
    });
}

void Inicio::cambiar(Control& control, const std::string& texto) {
    control.text = texto;
    partes_->entorno.bucle.entregar([&control] {
        if (control.alCambiar) control.alCambiar();
    });
}

void Inicio::salirDe(Control& control) {
    partes_->entorno.bucle.entregar([&control] {
        if (control.alSalir) control.alSalir();
    });
}

int Inicio::teclear(Control& control, int tecla) {
    if (!control.enabled() || !control.alTeclear) return tecla;
    control.alTeclear(tecla);
    return tecla;
}

}  // namespace telvane
