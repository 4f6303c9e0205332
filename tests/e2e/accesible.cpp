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

QDBusConnection busDeAccesibilidad(const std::string& sesion) {
    qDBusRegisterMetaType<Direccion>();
    qDBusRegisterMetaType<QList<Direccion>>();
    qDBusRegisterMetaType<QList<quint32>>();
    const auto bus = conectarAlBus(QString::fromStdString(sesion));
    const auto direccion = primero(pedir(bus, QStringLiteral("org.a11y.Bus"), QStringLiteral("/org/a11y/bus"),
                                         QStringLiteral("org.a11y.Bus"), QStringLiteral("GetAddress")));
    return conectarAlBus(direccion.toString());
}

}  // namespace

// A name for a connection is taken once in the life of a process.
QDBusConnection conectarAlBus(const QString& direccion) {
    static int conexiones = 0;
    const auto nombre = QStringLiteral("telvane-%1").arg(++conexiones);
    auto bus = QDBusConnection::connectToBus(direccion, nombre);
    if (!bus.isConnected()) throw std::runtime_error("bus: " + bus.lastError().message().toStdString());
    return bus;
}

QVariant Accesible::propiedad(const QString& interfaz, const QString& cual) const {
    return primero(pedir(bus_, servicio_, ruta_, QStringLiteral("org.freedesktop.DBus.Properties"),
                         QStringLiteral("Get"), {interfaz, cual}))
        .value<QDBusVariant>()
        .variant();
}

std::string Accesible::nombre() const {
    return propiedad(kIAccesible, QStringLiteral("Name")).toString().toStdString();
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

Lugar Accesible::lugar() const {
    constexpr uint kEnLaPantalla = 0;
    const auto respuesta = pedir(bus_, servicio_, ruta_, QStringLiteral("org.a11y.atspi.Component"),
                                 QStringLiteral("GetExtents"), {kEnLaPantalla});
    Lugar lugar;
    if (respuesta.type() != QDBusMessage::ReplyMessage) return lugar;
    const auto argumento = respuesta.arguments().constFirst().value<QDBusArgument>();
    argumento.beginStructure();
    argumento >> lugar.x >> lugar.y >> lugar.ancho >> lugar.alto;
    argumento.endStructure();
    return lugar;
}

std::optional<ValorAccesible> Accesible::valor() const {
    const auto numero = [this](const char* cual) {
        return propiedad(QStringLiteral("org.a11y.atspi.Value"), QString::fromLatin1(cual));
    };
    const auto actual = numero("CurrentValue");
    const auto minimo = numero("MinimumValue");
    const auto maximo = numero("MaximumValue");
    if (!actual.isValid() || !minimo.isValid() || !maximo.isValid()) return std::nullopt;
    return ValorAccesible{actual.toDouble(), minimo.toDouble(), maximo.toDouble()};
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

bool Accesible::enfocar() const {
    return primero(pedir(bus_, servicio_, ruta_, QStringLiteral("org.a11y.atspi.Component"),
                         QStringLiteral("GrabFocus")))
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
                  (hijo.papel() == "text" ? "\" = \"" + hijo.texto().substr(0, 60) + "\"" : "\"") +
                  (hijo.visible() ? "" : " (oculto)") + (hijo.habilitado() ? "" : " (inactivo)") + "\n" +
                  hijo.arbol(sangria + 2);
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

// The bus and its list of programs are started by the first who asks: they are up before any program looks
// for them.
Accesibilidad::Accesibilidad(const std::string& sesion) : bus_(busDeAccesibilidad(sesion)) {
    raiz().hijos();
}

Accesible Accesibilidad::raiz() const {
    return {bus_, QStringLiteral("org.a11y.atspi.Registry"),
            QStringLiteral("/org/a11y/atspi/accessible/root")};
}

}  // namespace telvane
