// Keys that were not meant for a window: down before it appeared, or hit twice before it could be read.
#pragma once

#include <chrono>
#include <map>
#include <set>

#include <QObject>
#include <QPointer>
#include <QWidget>

namespace telvane {

// Listens to the whole program for as long as it lives.
class TeclasAjenas final : public QObject {
   public:
    TeclasAjenas();

    // Called as the window appears; the one that was watched before is not watched any more.
    void aparece(QWidget& ventana);

   protected:
    bool eventFilter(QObject* objeto, QEvent* suceso) override;

   private:
    using Instante = std::chrono::steady_clock::time_point;

    bool esAjena(int tecla, bool pulsada, bool repetida);
    bool seguida(int tecla, Instante anterior, Instante ahora) const;

    QPointer<QWidget> ventana_;
    std::map<int, Instante> pulsaciones_;  // of Enter and the space bar: what answers
    std::set<int> propias_;                // pressed anew since the window is there
};

}  // namespace telvane
