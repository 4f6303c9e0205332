#include "tests/e2e/oyente.h"

#include <algorithm>
#include <stdexcept>

#include <QCoreApplication>
#include <QDBusVariant>

namespace telvane {

Oyente::Oyente(QDBusConnection bus) {
    // A program announces nothing until somebody has said that he listens.
    auto aviso = QDBusMessage::createMethodCall(
        QStringLiteral("org.a11y.atspi.Registry"), QStringLiteral("/org/a11y/atspi/registry"),
        QStringLiteral("org.a11y.atspi.Registry"), QStringLiteral("RegisterEvent"));
    aviso.setArguments({QStringLiteral("object:text-changed:insert"), QStringList(), QString()});
    const auto respuesta = bus.call(aviso);
    const bool conectado = bus.connect(QString(), QString(), QStringLiteral("org.a11y.atspi.Event.Object"),
                                       QStringLiteral("TextChanged"), this, SLOT(alInsertar(QDBusMessage)));
    if (respuesta.type() == QDBusMessage::ErrorMessage || !conectado) {
        throw std::runtime_error("oyente: " + respuesta.errorMessage().toStdString());
    }
}

// "insert", offset, length, the text, ...
void Oyente::alInsertar(const QDBusMessage& senal) {
    const auto partes = senal.arguments();
    if (partes.size() < 4 || !partes[0].toString().startsWith(QLatin1String("insert"))) return;
    textos_.push_back(partes[3].value<QDBusVariant>().variant().toString().toStdString());
}

bool Oyente::oyo(const std::string& comienzo) const {
    QCoreApplication::processEvents();
    return std::any_of(textos_.begin(), textos_.end(),
                       [&](const std::string& texto) { return texto.starts_with(comienzo); });
}

}  // namespace telvane
