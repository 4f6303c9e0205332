#include "tests/e2e/portal_de_mentira.h"

#include <stdexcept>

#include <QCoreApplication>
#include <QDBusError>

#include "tests/e2e/accesible.h"

namespace telvane {

PortalDeMentira::PortalDeMentira(const std::string& bus, const QVariant& preferencia)
    : bus_(conectarAlBus(QString::fromStdString(bus))), preferencia_(preferencia) {
    const bool listo =
        bus_.registerObject(QStringLiteral("/org/freedesktop/portal/desktop"), this,
                            QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals) &&
        bus_.registerService(QStringLiteral("org.freedesktop.portal.Desktop"));
    if (!listo) throw std::runtime_error("portal: " + bus_.lastError().message().toStdString());
}

void PortalDeMentira::cambiar(const QVariant& preferencia) {
    preferencia_ = preferencia;
    emit SettingChanged(QStringLiteral("org.freedesktop.appearance"), QStringLiteral("color-scheme"),
                        QDBusVariant(preferencia));
}

bool PortalDeMentira::preguntado() const {
    QCoreApplication::processEvents();
    return preguntado_;
}

// A variant within the variant, as every portal has always answered.
QDBusVariant PortalDeMentira::Read(const QString& espacio, const QString& clave) {
    preguntado_ =
        espacio == QLatin1String("org.freedesktop.appearance") && clave == QLatin1String("color-scheme");
    return QDBusVariant(QVariant::fromValue(QDBusVariant(preferencia_)));
}

}  // namespace telvane
