#include "tests/e2e/accesible.h"

#include <stdexcept>

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusReply>
#include <QDBusVariant>

namespace telvane {

// A thing's address: the program that has it, and its path there.
struct Direccion {
    QString servicio;
    QDBusObjectPath ruta;
};

QDBusArgument& operator<<(QDBusArgument& argumento, const Direccion& direccion) {
    argumento.beginStructure();
    argumento << direccion.servicio << direccion.ruta;
    argumento.endStructure();
    return argumento;
}

const QDBusArgument& operator>>(const QDBusArgument& argumento, Direccion& direccion) {
    argumento.beginStructure();
    argumento >> direccion.servicio >> direccion.ruta;
    argumento.endStructure();
    return argumento;
}

namespace {

constexpr int kPlazoMs = 10'000;
const auto kIAccesible = QStringLiteral("org.a11y.atspi.Accessible");

QDBusMessage pedir(const QDBusConnection& bus, const QString& servicio, const QString& ruta,
                   const QString& interfaz, const QString& metodo, const QVariantList& argumentos = {}) {
    auto mensaje = QDBusMessage::createMethodCall(servicio, ruta, interfaz, metodo);
    mensaje.setArguments(argumentos);
    return bus.call(mensaje, QDBus::Block, kPlazoMs);
}

QVariant primero(const QDBusMessage& respuesta) {
    const bool vale = respuesta.type() == QDBusMessage::ReplyMessage && !respuesta.arguments().isEmpty();
    return vale ? respuesta.arguments().constFirst() : QVariant();
}

QDBusConnection conectar(const QString& direccion, const QString& nombre) {
    // A connection of this name to an earlier desktop has ended with it.
    QDBusConnection::disconnectFromBus(nombre);
    auto bus = QDBusConnection::connectToBus(direccion, nombre);
    if (!bus.isConnected()) throw std::runtime_error("bus: " + bus.lastError().message().toStdString());
    return bus;
}

QDBusConnection busDeAccesibilidad(const std::string& sesion) {
    qDBusRegisterMetaType<Direccion>();
    qDBusRegisterMetaType<QList<Direccion>>();
    qDBusRegisterMetaType<QList<quint32>>();
    const auto bus = conectar(QString::fromStdString(sesion), QStringLiteral("sesion"));
    const auto direccion = primero(pedir(bus, QStringLiteral("org.a11y.Bus"), QStringLiteral("/org/a11y/bus"),
                                         QStringLiteral("org.a11y.Bus"), QStringLiteral("GetAddress")));
    return conectar(direccion.toString(), QStringLiteral("accesibilidad"));
}

}  // namespace

std::string Accesible::nombre() const {
    const auto valor =
        primero(pedir(bus_, servicio_, ruta_, QStringLiteral("org.freedesktop.DBus.Properties"),
                      QStringLiteral("Get"), {kIAccesible, QStringLiteral("Name")}));
    return valor.value<QDBusVariant>().variant().toString().toStdString();
}

std::string Accesible::papel() const {
    return primero(pedir(bus_, servicio_, ruta_, kIAccesible, QStringLiteral("GetRoleName")))
        .toString()
        .toStdString();
}

std::string Accesible::texto() const {
    return primero(pedir(bus_, servicio_, ruta_, QStringLiteral("org.a11y.atspi.Text"),
                         QStringLiteral("GetText"), {0, -1}))
        .toString()
        .toStdString();
}

std::vector<Accesible> Accesible::hijos() const {
    const QDBusReply<QList<Direccion>> respuesta =
        pedir(bus_, servicio_, ruta_, kIAccesible, QStringLiteral("GetChildren"));
    std::vector<Accesible> todos;
    for (const auto& direccion : respuesta.value())
        todos.emplace_back(bus_, direccion.servicio, direccion.ruta.path());
    return todos;
}

bool Accesible::pulsar() const {
    return primero(pedir(bus_, servicio_, ruta_, QStringLiteral("org.a11y.atspi.Action"),
                         QStringLiteral("DoAction"), {0}))
        .toBool();
}

bool Accesible::escribir(const std::string& texto) const {
    return primero(pedir(bus_, servicio_, ruta_, QStringLiteral("org.a11y.atspi.EditableText"),
                         QStringLiteral("SetTextContents"), {QString::fromStdString(texto)}))
        .toBool();
}

std::optional<Accesible> Accesible::buscar(const Prueba& prueba) const {
    for (const auto& hijo : hijos()) {
        if (hijo.visible() && prueba(hijo)) return hijo;
        if (auto hallado = hijo.buscar(prueba)) return hallado;
    }
    return std::nullopt;
}

std::optional<Accesible> Accesible::buscar(const std::string& papel, const std::string& nombre) const {
    return buscar([&](const Accesible& uno) { return uno.nombre() == nombre && uno.papel() == papel; });
}

std::string Accesible::arbol(int sangria) const {
    std::string lineas;
    for (const auto& hijo : hijos()) {
        lineas += std::string(static_cast<std::size_t>(sangria), ' ') + hijo.papel() + " \"" + hijo.nombre() +
                  "\"" + (hijo.visible() ? "" : " (oculto)") + (hijo.habilitado() ? "" : " (inactivo)") +
                  "\n" + hijo.arbol(sangria + 2);
    }
    return lineas;
}

bool Accesible::estado(unsigned bit) const {
    const QDBusReply<QList<quint32>> respuesta =
        pedir(bus_, servicio_, ruta_, kIAccesible, QStringLiteral("GetState"));
    const auto palabras = respuesta.value();
    const auto palabra = static_cast<qsizetype>(bit / 32);
    return palabras.size() > palabra && (palabras[palabra] >> (bit % 32) & 1U) != 0;
}

Accesibilidad::Accesibilidad(const std::string& sesion) : bus_(busDeAccesibilidad(sesion)) {}

Accesible Accesibilidad::raiz() const {
    return {bus_, QStringLiteral("org.a11y.atspi.Registry"),
            QStringLiteral("/org/a11y/atspi/accessible/root")};
}

}  // namespace telvane
