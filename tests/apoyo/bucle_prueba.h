// A loop and a clock of virtual time: an hour of waiting passes in microseconds, always in the same order.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

#include "platform/bucle.h"
#include "platform/reloj.h"

namespace telvane {

// Starts on Friday 20 November 2026 at 10:00:00.
class RelojPrueba final : public Reloj {
   public:
    RelojPrueba();

    FechaHora ahora() const override;
    std::chrono::nanoseconds monotono() const override { return monotono_; }

    // Sets the clock on the wall; the monotonic one does not notice.
    void ponerHora(const FechaHora& hora);
    // The wall clock jumps, back for a negative value; the monotonic one does not notice.
    void saltar(std::chrono::nanoseconds salto) { civil_ += salto; }
    // Time passes on both, as in a handler that takes long: what falls due meanwhile is delivered late.
    void dejarPasar(std::chrono::nanoseconds duracion);

   private:
    std::chrono::nanoseconds monotono_;
    std::chrono::nanoseconds civil_;  // local time since 1970-01-01 00:00
};

// What lives on the loop's clock and not on the loop, so that no pause holds it back: a network with what
// stands at its other end. With one the loop watches descriptors; time moves on only when nothing is on its
// way to them.
class Alrededores {
   public:
    virtual ~Alrededores() = default;
    // Everything that was sent until now arrives. True: there is more to send at this very moment.
    virtual bool alDia() = 0;
};

class BuclePrueba final : public Bucle {
   public:
    BuclePrueba();
    ~BuclePrueba() override;

    RelojPrueba& reloj() { return reloj_; }
    const RelojPrueba& reloj() const { return reloj_; }

    // Delivers what a descriptor brings now, or moves the time to the next alarm and delivers it; alarms of
    // one instant come in the order of their arming. False: there is neither.
    bool girar();
    // Delivers everything that falls due within the duration and leaves the time at its end.
    void avanzar(Duracion duracion);
    // Turns until the condition holds; it is tested before the first event and after each one. The time is
    // left at the limit when nothing fulfilled it. Returns whether it holds.
    [[nodiscard]] bool correrHasta(const std::function<bool()>& condicion,
                                   Duracion limite = std::chrono::minutes(10));
    // Turns until no alarm is armed (true) or the limit has passed (false): a periodic timer never ends.
    bool correr(Duracion limite = std::chrono::minutes(10));

    // Looked at before every event; none: nullptr.
    void rodear(Alrededores* alrededores) { alrededores_ = alrededores; }

    // An action of the user, some time from now: held back by a pause like every event.
    void programar(Duracion plazo, Accion accion);

    std::size_t alarmasArmadas() const;
    std::size_t sucesosEntregados() const { return entregados_; }

   protected:
    // In-process ports have no descriptor: throws std::logic_error without anything around.
    std::unique_ptr<Lectura> fuenteLectura(int descriptor, Accion accion) override;
    Asidero fuenteAlarma(Duracion plazo, Accion accion) override;

   private:
    struct Cola;
    class Alarma;
    class LecturaDePrueba;
    bool entregarLectura();
    void girarAlarma();
    void vigilarGiroEnVano(Duracion vence);

    RelojPrueba reloj_;
    std::shared_ptr<Cola> cola_;
    Alrededores* alrededores_ = nullptr;
    std::vector<Asidero> programadas_;
    std::size_t entregados_ = 0;
    std::size_t enEsteInstante_ = 0;
};

}  // namespace telvane
