#include "app/qt/programa.h"

#include <cstdlib>
#include <memory>
#include <utility>

#include <QMessageBox>
#include <QTimer>

#include "platform/archivo.h"
#include "ui/qt/dialogo_progress.h"
#include "ui/qt/ventana_coef.h"
#include "ui/qt/ventana_presenta.h"

namespace telvane {

namespace {

std::filesystem::path rutaRegional() {
    const auto carpeta = carpetaDeAjustes();
    return carpeta.empty() ? carpeta : carpeta / "regional";
}

}  // namespace

Programa::Programa(Aplicacion& aplicacion, const Opciones& opciones)
    : aplicacion_(aplicacion),
      colores_(QDBusConnection::sessionBus()),
      puertos_(bucle_, MapaCom::deOpciones(opciones.com)),
      registro_(rutaRegional()),
      dialogos_(bucle_, reloj_),
      inicio_(entorno(opciones)),
      ventana_(inicio_.forma, usuario()),
      progress_(inicio_.progress,
                [this] { return std::make_unique<DialogoProgress>(inicio_.progress, usuario(), &ventana_); }),
      presenta_(
          inicio_.presenta, [this] { return std::make_unique<VentanaPresenta>(inicio_.presenta, ventana_); },
          [this](std::function<void()> accion) { ventana_.trasPrimerCuadro(std::move(accion)); }),
      coef_(inicio_.coef,
            [this] { return std::make_unique<VentanaCoef>(inicio_.coef, usuario(), &ventana_); }),
      senales_([this] { Aplicacion::exit(estadoFinal(0)); }) {
    dialogos_.ventana(&ventana_, [this] { return progress_.ventana(); });
    aplicacion_.alFallar([this](const std::string& que) { informar(que); });
}

Programa::~Programa() {
    aplicacion_.alFallar({});
}

Entorno Programa::entorno(const Opciones& opciones) {
    return {.bucle = bucle_,
            .reloj = reloj_,
            .puertos = puertos_,
            .dialogos = dialogos_,
            .registro = registro_,
            // Descriptors are closed and locks let go of by the system; nothing of ours runs any more.
            .terminar = [this](int estado) { std::_Exit(estadoFinal(estado)); },
            .informeDeFallo = [this](const std::string& que) { informar(que); },
            .perfil = opciones.perfil,
            .carpetaBase = carpetaDeDatos(),
            .inhibidor = &inhibidor_};
}

Usuario Programa::usuario() {
    return {
        .pulsar = [this](Control& control) { inicio_.pulsar(control); },
        .cambiar = [this](Control& control, const std::string& texto) { inicio_.cambiar(control, texto); },
        .salirDe = [this](Control& control) { inicio_.salirDe(control); },
        .teclear = [this](Control& control, int tecla) { return inicio_.teclear(control, tecla); }};
}

// An end that somebody asks for while the report of a failure stands on the screen does not hide the failure.
int Programa::estadoFinal(int pedido) const {
    return fallando_ ? kFallo : pedido;
}

// The state of the operations is unknown from here on: none of them goes on behind the box.
void Programa::informar(const std::string& que) {
    if (std::exchange(fallando_, true)) return;
    bucle_.detener();
    const Mensaje mensaje("Error en tiempo de ejecución:\n" + que, Botones::aceptar, Icono::critico);
    auto* caja = nuevaCaja(mensaje, ventana_.isVisible() ? &ventana_ : nullptr);
    QObject::connect(caja, &QDialog::finished, caja, [] { std::_Exit(kFallo); });
    caja->show();
}

int Programa::correr() {
    QTimer::singleShot(0, &aplicacion_, [this] {
        inicio_.cargar();
        ventana_.trasPrimerCuadro([this] { aplicacion_.hablarCastellano(); });
    });
    return Aplicacion::exec();
}

}  // namespace telvane
