// The loop of the console tools, on poll(2), and the signals that come through it.
#pragma once

#include <csignal>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <vector>

#include "platform/bucle.h"

namespace telvane {

// Sleeps until something is due. What descriptors tell comes before the alarms of the same moment, so bytes
// that arrived in time are never overtaken by their deadline.
class BuclePosix final : public Bucle {
   public:
    BuclePosix();
    ~BuclePosix() override;

    // Delivers events until terminar, or until nothing is watched any more. Throws std::system_error where
    // the system cannot wait; so does correrHasta.
    void correr();
    // Ends the innermost correr or correrHasta after the running event.
    void terminar() { terminar_ = true; }
    // Delivers events until the condition holds; it is tested before the first event and after each one. Ends
    // as well after limite (none: never) on the monotonic clock, by terminar, or when nothing is watched.
    // Returns whether the condition holds.
    [[nodiscard]] bool correrHasta(const std::function<bool()>& condicion,
                                   std::optional<Duracion> limite = {});

    // Times that the loop woke up; a loop that spins shows here.
    std::uint64_t despertares() const { return despertares_; }

   protected:
    std::unique_ptr<Lectura> fuenteLectura(int descriptor, Accion accion) override;
    Asidero fuenteAlarma(Duracion plazo, Accion accion) override;

   private:
    struct Fuentes;
    class LecturaPosix;
    class AlarmaPosix;
    using Fin = std::function<bool()>;

    bool dormir(std::optional<Duracion> limite);
    bool entregarLecturas(const Fin& fin);
    bool entregarAlarmas(const Fin& fin);

    std::shared_ptr<Fuentes> fuentes_;
    bool terminar_ = false;
    std::uint64_t despertares_ = 0;
};

// Signals as events of a loop: while it lives, those listed neither kill the process nor interrupt a call.
// Other threads must be started while it lives, so that they inherit the block; so do programs that are
// started then. One at a time for a signal. The loop outlives it.
class Senales {
   public:
    // Throws std::system_error when the system gives no descriptor.
    Senales(Bucle& bucle, const std::vector<int>& cuales, std::function<void(int senal)> alLlegar);
    Senales(const Senales&) = delete;
    Senales& operator=(const Senales&) = delete;
    ~Senales();

    // Whether a signal came that the loop has not delivered yet. From any thread.
    bool enEspera() const;

   private:
    void leer();

    std::function<void(int)> alLlegar_;
    sigset_t anterior_{};
    int descriptor_ = -1;
    Bucle::Asidero vigilancia_;
};

}  // namespace telvane
