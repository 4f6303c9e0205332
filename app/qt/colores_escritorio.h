// Dark colours where the desktop asks for them.
#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>

namespace telvane {

// The toolkit does not read the desktop's preference itself; the desktop's settings portal tells it, at once
// and at every change. A comfort that is never waited for: without a bus, without a portal, or with an answer
// that is no preference, the colours stay as they are.
class ColoresDelEscritorio final : public QObject {
    Q_OBJECT
   public:
    // Asks, and comes back without the answer. The application exists.
    explicit ColoresDelEscritorio(QDBusConnection bus);
    ColoresDelEscritorio(const ColoresDelEscritorio&) = delete;
    ColoresDelEscritorio& operator=(const ColoresDelEscritorio&) = delete;
    ~ColoresDelEscritorio() override = default;

   private:
    // The answer, and every announcement of a change.
    Q_SLOT void alSaber(const QDBusMessage& mensaje);

    bool oscurecido_ = false;  // by us
};

}  // namespace telvane
