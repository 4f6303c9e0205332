// The desktop's settings portal as far as the window asks it, on a test's own session bus.
#pragma once

#include <string>

#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>
#include <QVariant>

namespace telvane {

class PortalDeMentira final : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")
   public:
    // bus: address of the session's bus. preferencia: what it answers and has not told anybody yet. It
    // answers while events are processed. Throws std::runtime_error when it cannot take its name.
    PortalDeMentira(const std::string& bus, const QVariant& preferencia);

    void cambiar(const QVariant& preferencia);
    // Whether it has been asked; takes in what came since.
    bool preguntado() const;

   public slots:
    QDBusVariant Read(const QString& espacio, const QString& clave);

   signals:
    void SettingChanged(const QString& espacio, const QString& clave, const QDBusVariant& valor);

   private:
    QDBusConnection bus_;
    QVariant preferencia_;
    bool preguntado_ = false;
};

}  // namespace telvane
