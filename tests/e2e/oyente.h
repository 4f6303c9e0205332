// Hears what the window announces to assistive technology, as a screen reader does.
#pragma once

#include <string>
#include <vector>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>

namespace telvane {

class Oyente final : public QObject {
    Q_OBJECT
   public:
    explicit Oyente(QDBusConnection bus);
    // Whether a text that begins so has been announced; takes in what came since.
    bool oyo(const std::string& comienzo) const;
    const std::vector<std::string>& textos() const { return textos_; }

   public slots:
    void alInsertar(const QDBusMessage& senal);

   private:
    std::vector<std::string> textos_;
};

}  // namespace telvane
