// Keys that were not meant for a window: down before it appeared, or hit twice before it could be read.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <set>

#include <QKeyEvent>
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

    bool esAjena(const QKeyEvent& tecla, bool pulsada);
    bool sigueAbajo(const QKeyEvent& tecla) const;
    bool seguida(int tecla, Instante anterior, Instante ahora) const;

    QPointer<QWidget> ventana_;
    std::map<int, Instante> pulsaciones_;   // of Enter and the space bar: what answers
    std::map<int, std::uint64_t> subidas_;  // when a key went up last, in the display's milliseconds
    std::set<int> propias_;                 // pressed anew since the window is there
};

}  // namespace telvane
