#include "app/qt/colores_escritorio.h"

#include <QApplication>
#include <QDBusVariant>
#include <QPalette>

#include "app/qt/paleta_oscura.h"

namespace telvane {

namespace {

constexpr uint kPrefiereOscuro = 1;

bool esOscura(const QPalette& paleta) {
    return paleta.color(QPalette::Window).lightness() < paleta.color(QPalette::WindowText).lightness();
}

}  // namespace

ColoresDelEscritorio::ColoresDelEscritorio(QDBusConnection bus) {
    const auto portal = QStringLiteral("org.freedesktop.portal.Desktop");
    const auto ruta = QStringLiteral("/org/freedesktop/portal/desktop");
    const auto interfaz = QStringLiteral("org.freedesktop.portal.Settings");
    const QStringList preferencia{QStringLiteral("org.freedesktop.appearance"),
                                  QStringLiteral("color-scheme")};
    // From whoever sends it: to follow the portal's name, the toolkit would wait for an answer of the bus.
    bus.connect({}, ruta, interfaz, QStringLiteral("SettingChanged"), preferencia, QStringLiteral("ssv"),
                this, SLOT(alSaber(QDBusMessage)));
    auto pregunta = QDBusMessage::createMethodCall(portal, ruta, interfaz, QStringLiteral("Read"));
    pregunta << preferencia[0] << preferencia[1];
    bus.callWithCallback(pregunta, this, SLOT(alSaber(QDBusMessage)));
}

// The value comes last, in the answer within a variant within a variant, in the announcement within one.
void ColoresDelEscritorio::alSaber(const QDBusMessage& mensaje) {
    auto dentro = mensaje.arguments().isEmpty() ? QVariant() : mensaje.arguments().constLast();
    while (dentro.metaType() == QMetaType::fromType<QDBusVariant>()) {
        dentro = dentro.value<QDBusVariant>().variant();
    }
    if (dentro.metaType() != QMetaType::fromType<uint>()) return;
    const bool oscuro = dentro.toUInt() == kPrefiereOscuro;
    if (oscuro == oscurecido_) return;
    // A desktop whose own theme is dark already has chosen better than we would.
    if (oscuro && esOscura(QApplication::palette())) return;
    oscurecido_ = oscuro;
    // An empty one has no colour of its own: the theme's again.
    QApplication::setPalette(oscuro ? paletaOscura() : QPalette());
}

}  // namespace telvane
