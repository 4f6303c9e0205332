#include "app/inicio.h"

#include <algorithm>
#include <optional>

#include "app/retenidos.h"
#include "app/temporizador.h"
#include "data/archivo_base.h"
#include "data/descarga.h"
#include "data/exportacion.h"
#include "link/busqueda_puerto.h"
#include "link/enlace.h"
#include "link/sucesos.h"
#include "link/turno.h"
#include "live/en_linea.h"
#include "loggerconfig/edicion.h"
#include "loggerconfig/escritura.h"
#include "loggerconfig/estado_config.h"
#include "loggerconfig/lectura.h"
#include "loggerconfig/serie.h"
#include "platform/esperas.h"
#include "platform/motivos.h"
#include "platform/tarea.h"
#include "platform/vigilia.h"
#include "regional/module1.h"
#include "ui/teclas.h"
#include "ui/textos.h"

namespace telvane {

namespace {

constexpr std::string_view kLecturaAMedias =
    "el registrador dejó de contestar: su configuración no llegó entera, impórtela otra vez";
constexpr std::string_view kSerieAMedias =
    "el registrador dejó de contestar: el número no le llegó entero, escríbalo otra vez";
constexpr std::string_view kEscrituraAMedias =
    "el registrador dejó de contestar: la configuración no le llegó entera, impórtela y mire qué guarda";
constexpr std::string_view kLecturaVieja =
    "el registrador dejó de contestar: la lectura que se ve es la última que llegó";
constexpr std::string_view kIntercambioEnCurso = "hay un intercambio en curso: espere a que termine";

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
    // The same for one that takes the logger's port.
    template <class Operacion>
    void alIntercambiar(Control& control, Operacion operacion) {
        control.alPulsar = [this, operacion] { intercambiar(operacion); };
    }
    template <class Operacion>
    void intercambiar(Operacion operacion) {
        if (!cedeElTurno()) lanzar(enTurno(operacion()));
    }
    Tarea<> enTurno(Tarea<> tarea);
    // Until it is stopped; what was held back does not wait for its end.
    bool leyendoEnLinea() const { return canales.MSComm6.PortOpen() && enLinea.enLinea(); }
    bool ocupado() const { return turno.enProgreso() || formas.progress.mostrado(); }
    bool cedeElTurno() const;
    // Whether what the user does to this control would make the form show something else than is being sent.
    bool seEnvia(const Control& control) const;
    // queQuedo: what is told of it where the logger falls silent in the middle; nothing where the operator
    // sees it stand still.
    template <class Operacion>
    void alRecibir(MSComm& canal, Operacion& operacion, std::string_view queQuedo);
    void vigilarSilencio(MSComm& canal, std::string_view queQuedo);

    Entorno entorno;
    Inicio& formas;
    FormaInicio& forma;
    Esperas esperas;
    Canales canales;
    Turno turno;
    EstadoEnlace estado;
    EstadoConfig config;
    EstadoDatos datos;
    Enlace enlace;
    Vigilia vigilia;
    Bucle::Asidero silencio;

    Edicion edicion;
    LecturaConfig lectura;
    BusquedaPuerto busqueda;
    DatosEnLinea enLinea;
    EscrituraConfig escritura;
    EscrituraSerie serie;
    Exportacion exportacion;
    ArchivoBase archivoBase;
    RutinasImagen imagen;
    Descarga descarga;

    // Running from start-up on, which disables both. Timer2 and Timer3 have no handler and never run.
    std::optional<Temporizador> timer1;
    std::optional<Temporizador> timer4;
    Retenidos usuario;
    Tareas tareas;
};

Inicio::Partes::Partes(Inicio& inicio, Entorno e)
    : entorno(std::move(e)),
      formas(inicio),
      forma(inicio.forma),
      esperas(entorno.bucle, entorno.reloj, tareas),
      canales(entorno.puertos),
      turno(entorno.bucle, entorno.reloj),
      datos(entorno.perfil),
      enlace{forma, canales, estado, entorno.reloj, esperas, entorno.dialogos, turno},
      vigilia(entorno.bucle, entorno.inhibidor, std::string(textos::kPorQueDespierta)),
      edicion(enlace, config),
      lectura(enlace, config, edicion, inicio.presenta),
      busqueda(enlace, inicio.presenta, [this] { return lectura.alPulsar(); }),
      enLinea(enlace, entorno.bucle),
      escritura(enlace, config, edicion),
      serie(enlace, config),
      exportacion(enlace, config, datos, inicio.progress),
      archivoBase(enlace, datos, inicio.progress, edicion),
      imagen(forma, config, datos.decodificador),
      descarga(enlace, datos, inicio.progress, vigilia,
               {.lanzar = [this](Tarea<> tarea) { lanzar(std::move(tarea)); },
                .guardarBase = [this] { archivoBase.guardarDescarga(); },
                .generargt = [this] { return exportacion.generargt(); }}),
      usuario(entorno.bucle,
              {.libre = [this] { return tareas.enCurso() == 0 && (leyendoEnLinea() || !ocupado()); },
               .falta = [this] { return turno.falta(); }}),
      tareas([this](const std::exception_ptr& fallo) { fallar(fallo); }) {
    datos.carpetaBase = entorno.carpetaBase;
    entorno.bucle.alTerminarSuceso([this] {
        esperas.revisar();
        usuario.revisar();
    });
    entorno.bucle.alFallar([this](const std::exception_ptr& fallo) { fallar(fallo); });
    conectarCanales();
    conectarBotones();
    conectarEdicion();
}

Tarea<> Inicio::Partes::enTurno(Tarea<> tarea) {
    silencio.reset();
    const Turno::Operacion operacion(turno);
    co_await tarea;
}

// What would take the port of an exchange that is in progress is not begun, and the operator is told.
bool Inicio::Partes::cedeElTurno() const {
    if (!ocupado()) return false;
    forma.imprimir(std::string(kIntercambioEnCurso));
    return true;
}

bool Inicio::Partes::seEnvia(const Control& control) const {
    if (!escritura.enviando()) return false;
    const auto es = [&](const Control* otro) { return otro == &control; };
    const auto campos = forma.camposEdicion();
    const auto opciones = forma.opciones();
    return std::any_of(campos.begin(), campos.end(), es) ||
           std::any_of(opciones.begin(), opciones.end(), es) || es(&forma.Check1);
}

template <class Operacion>
void Inicio::Partes::alRecibir(MSComm& canal, Operacion& operacion, std::string_view queQuedo) {
    canal.alComunicar = [this, &canal, &operacion, queQuedo] {
        const bool recibido = canal.CommEvent() == suceso::kRecibido;
        if (recibido) turno.vive();
        operacion.alComunicar();
        if (recibido) vigilarSilencio(canal, queQuedo);
    };
    canal.alFallar = [this](const std::string& porQue) {
        silencio.reset();
        forma.imprimir(porQue);
    };
}

// The exchange itself waits for as long as it takes; the operator need not.
void Inicio::Partes::vigilarSilencio(MSComm& canal, std::string_view queQuedo) {
    silencio.reset();
    if (queQuedo.empty() || !canal.PortOpen()) return;
    silencio = entorno.bucle.alarma(kSilencio, [this, &canal, queQuedo] {
        const bool parando = &canal == &canales.MSComm6 && !enLinea.enLinea();
        if (canal.PortOpen() && !parando) forma.imprimir(std::string(queQuedo));
    });
}

void Inicio::Partes::conectarCanales() {
    canales.MSComm1.alComunicar = [this] { alComunicarSonda(enlace); };
    canales.MSComm1.vigilarLinea(true);
    alRecibir(canales.MSComm2, lectura, kLecturaAMedias);
    alRecibir(canales.MSComm3, serie, kSerieAMedias);
    alRecibir(canales.MSComm4, descarga, {});
    alRecibir(canales.MSComm5, escritura, kEscrituraAMedias);
    alRecibir(canales.MSComm6, enLinea, kLecturaVieja);
    turno.canalEnUso([this] {
        // Live data that was stopped waits for a last frame, which may be lost.
        return canales.MSComm2.PortOpen() || canales.MSComm3.PortOpen() || canales.MSComm4.PortOpen() ||
               canales.MSComm5.PortOpen() || leyendoEnLinea();
    });
}

void Inicio::Partes::conectarBotones() {
    alIntercambiar(forma.Command1, [this] { return busqueda.alReconectar(); });
    alIntercambiar(forma.configuracion, [this] { return lectura.alPulsar(); });
    alIntercambiar(forma.Command3, [this] { return escritura.alPulsar(); });
    alIntercambiar(forma.Command13, [this] { return descarga.alPulsar(); });
    forma.Command4.alPulsar = [this] {
        if (enLinea.enLinea()) {
            enLinea.parar();
        } else {
            intercambiar([this] { return enLinea.empezar(); });
        }
    };
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
    forma.Command2.alPulsar = [this] {
        // What is being read or sent belongs to the exchange until it has ended.
        const bool configurando = canales.MSComm2.PortOpen() || canales.MSComm5.PortOpen();
        if (!configurando || !cedeElTurno()) edicion.alCambiarConfiguracion();
    };
    const auto opciones = forma.opciones();
    for (std::size_t i = 0; i < opciones.size(); ++i) {
        opciones[i]->alPulsar = [this, i] { edicion.alElegirIntervalo(i); };
    }
    forma.Check1.alPulsar = [this] { edicion.alTomarRelojPc(); };
    forma.fecha1.alCambiar = [this] { edicion.alCambiarFecha(); };
    forma.MaskEdBox2.alSalir = [this] { lanzar(edicion.alSalirDeHora()); };
    forma.Text10.alTeclear = [this](int& tecla) {
        const bool intro = tecla == kTeclaIntro;
        usuario.entregar(
            [this, intro, numero = forma.Text10.text()] {
                if (!forma.Text10.enabled()) return;
                serie.alTeclear();
                // The number that stood there when it was pressed, and no other: one that was held back may
                // find the field empty.
                if (intro && forma.Text10.text() == numero) intercambiar([this] { return serie.enviar(); });
            },
            intro ? &forma.Text10 : nullptr);
        tecla = teclaDeSerie(tecla);
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
    for (auto* campo : forma.camposEdicion()) campo->locked = true;
    forma.Command3.enabled = false;
    forma.Command2.enabled = false;
    datos.ultimoBloque = kUltimoBloque;
    if (entorno.perfil == Perfil::ampliado) forma.imprimir("perfil ampliado");
    co_await enTurno(busqueda.puerto());
}

Inicio::Inicio(Entorno entorno) : partes_(std::make_unique<Partes>(*this, std::move(entorno))) {}
Inicio::~Inicio() {
    partes_->entorno.bucle.alTerminarSuceso({});
    partes_->entorno.bucle.alFallar({});
}

void Inicio::cargar() {
    partes_->lanzar(partes_->arranque());
}

RutinasImagen& Inicio::imagen() {
    return partes_->imagen;
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
    partes_->usuario.entregar(
        [this, &control] {
            // A click that a pause held back counts as made after the exchange.
            if (!control.enabled() || !control.visible() || partes_->seEnvia(control)) return;
            if (control.clase() == Clase::opcion) {
                for (auto* opcion : forma.opciones()) opcion->value = opcion == &control ? 1 : 0;
            }
            if (control.clase() == Clase::casilla) control.value = control.value() == 0 ? 1 : 0;
            if (control.alPulsar) control.alPulsar();
        },
        control.clase() == Clase::boton ? &control : nullptr);
}

void Inicio::cambiar(Control& control, const std::string& texto) {
    if (!control.enabled() || control.locked() || partes_->seEnvia(control)) return;
    control.text = texto;
    // At once, a pause or not: what stands in a field is what will be sent of it.
    if (control.alCambiar) control.alCambiar();
}

void Inicio::salirDe(Control& control) {
    partes_->usuario.entregar([this, &control] {
        if (control.alSalir && !partes_->seEnvia(control)) control.alSalir();
    });
}

int Inicio::teclear(Control& control, int tecla) {
    if (!control.enabled() || !control.alTeclear) return tecla;
    control.alTeclear(tecla);
    return tecla;
}

}  // namespace telvane
