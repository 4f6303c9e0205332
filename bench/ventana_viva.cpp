#include "bench/ventana_viva.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <optional>
#include <stdexcept>

#include <QAbstractButton>
#include <QEventLoop>
#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>

#include "app/opciones.h"
#include "app/qt/aplicacion.h"
#include "app/qt/programa.h"
#include "bench/ajustes.h"

namespace telvane::bench {

namespace {

QWidget& deNombre(const char* nombre) {
    const auto ventanas = QApplication::topLevelWidgets();
    for (auto* ventana : ventanas) {
        if (auto* widget = ventana->findChild<QWidget*>(QLatin1String(nombre))) return *widget;
    }
    throw std::runtime_error(std::string("no hay ") + nombre);
}

// Nothing of the user's is read or written, and the regional values are right from the start.
void prepararCarpetas(const std::filesystem::path& carpeta) {
    escribirAjustes(carpeta);
    for (const auto* variable : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "HOME"}) {
        qputenv(variable, carpeta.c_str());
    }
}

// "No" where it is offered, otherwise what the return key would press.
void responder(QMessageBox& caja) {
    auto* elegido = static_cast<QAbstractButton*>(caja.defaultButton());
    const auto botones = caja.buttons();
    for (auto* boton : botones) {
        if (boton->text() == QLatin1String("No")) elegido = boton;
    }
    elegido->click();
}

}  // namespace

int VentanaViva::correr(const std::string& com, const std::filesystem::path& carpeta, const Guion& guion) {
    prepararCarpetas(carpeta);
    prepararQt();
    std::string nombre = "telvane";
    char* argumentos = nombre.data();
    int cuantos = 1;
    Aplicacion aplicacion(cuantos, &argumentos);
    Programa programa(aplicacion, Opciones{.com = {"1=" + com}});
    VentanaViva viva(carpeta / "datos.csv");
    aplicacion.installEventFilter(&viva);
    // Behind what the start of the program posts: events posted before a nested loop wait for its end.
    QTimer::singleShot(50, &viva, [&] {
        int estado = 0;
        try {
            guion(viva);
        } catch (const std::exception& error) {
            std::fprintf(stderr, "%s\n", error.what());
            estado = 1;
        }
        Aplicacion::exit(estado);
    });
    return programa.correr();
}

void VentanaViva::conectar() {
    constexpr std::chrono::seconds kPlazo(60);
    esperar([this] { return cajas(" Conexion en COM") > 0; }, kPlazo);
    esperarHabilitado("Command2", kPlazo);
    dejarCorrer(std::chrono::seconds(1));
}

void VentanaViva::pulsar(const char* nombre) const {
    dynamic_cast<QAbstractButton&>(deNombre(nombre)).click();
}

void VentanaViva::esperarHabilitado(const char* nombre, std::chrono::seconds plazo) {
    esperar([nombre] { return deNombre(nombre).isEnabled(); }, plazo);
}

void VentanaViva::esperar(const std::function<bool()>& condicion, std::chrono::seconds plazo) {
    if (condicion()) return;
    QEventLoop vuelta;
    bool cumplida = false;
    alSuceder_ = [&] {
        if (cumplida || !condicion()) return;
        cumplida = true;
        vuelta.quit();
    };
    QTimer::singleShot(plazo, &vuelta, &QEventLoop::quit);
    vuelta.exec();
    alSuceder_ = {};
    if (!cumplida) throw std::runtime_error("la ventana no llegó a tiempo");
}

void VentanaViva::dejarCorrer(std::chrono::milliseconds tiempo) {
    QEventLoop vuelta;
    QTimer::singleShot(tiempo, Qt::PreciseTimer, &vuelta, &QEventLoop::quit);
    vuelta.exec();
}

int VentanaViva::cajas(const std::string& comienzo) const {
    return static_cast<int>(
        std::count_if(cajas_.begin(), cajas_.end(), [&](const auto& c) { return c.starts_with(comienzo); }));
}

// Once the change that is being told has been made.
void VentanaViva::mirar() {
    QTimer::singleShot(0, this, [this] {
        if (alSuceder_) alSuceder_();
    });
}

bool VentanaViva::eventFilter(QObject* objeto, QEvent* suceso) {
    switch (suceso->type()) {
        case QEvent::SockAct:
            ++lecturas_;
            break;
        case QEvent::EnabledChange:
            mirar();
            break;
        case QEvent::Show:
            if (auto* caja = qobject_cast<QMessageBox*>(objeto)) {
                cajas_.push_back(caja->text().toStdString());
                mirar();
                QTimer::singleShot(0, caja, [caja] { responder(*caja); });
            } else if (auto* dialogo = qobject_cast<QFileDialog*>(objeto)) {
                QTimer::singleShot(0, dialogo, [this, dialogo] {
                    std::filesystem::remove(guardarEn_);  // or it asks whether to replace it
                    dialogo->findChild<QLineEdit*>()->setText(QFile::decodeName(guardarEn_.c_str()));
                    QMetaObject::invokeMethod(dialogo, "accept");
                });
            }
            break;
        default:
            break;
    }
    return false;
}

}  // namespace telvane::bench
