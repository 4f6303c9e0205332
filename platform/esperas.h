// The one way in which an operation waits for time or for the logger.
#pragma once

#include <chrono>
#include <coroutine>
#include <functional>
#include <list>
#include <memory>
#include <string>

#include "platform/bucle.h"
#include "platform/reloj.h"
#include "platform/tarea.h"

namespace telvane {

// Outlives every wait.
class Esperas {
   public:
    using Condicion = std::function<bool()>;

    Esperas(Bucle& bucle, const Reloj& reloj, const Tareas& tareas)
        : bucle_(bucle), reloj_(reloj), tareas_(tareas) {}
    Esperas(const Esperas&) = delete;
    Esperas& operator=(const Esperas&) = delete;

    class HastaAwaiter;
    class PausaAwaiter;

    // Waits, yielding, until the condition holds or the clock on the wall has passed inicio + limite. inicio
    // is the clock's text (segundosComoTexto). The loop turns at least once. A wait whose end lies past
    // midnight ends with its condition only, because the clock starts again at 0. While an operation that was
    // started later is running, the wait goes on.
    [[nodiscard]] HastaAwaiter hasta(const std::string& inicio, std::chrono::milliseconds limite,
                                     Condicion condicion);
    // Waits without yielding: no event is delivered meanwhile. Measured on the monotonic clock, so it always
    // ends.
    [[nodiscard]] PausaAwaiter sinCeder(std::chrono::nanoseconds duracion);

    // Looks at every waiting condition; called after each delivered event.
    void revisar();

    class HastaAwaiter {
       public:
        HastaAwaiter(Esperas& esperas, double final, Condicion condicion)
            : esperas_(esperas), final_(final), condicion_(std::move(condicion)) {}
        HastaAwaiter(const HastaAwaiter&) = delete;
        HastaAwaiter& operator=(const HastaAwaiter&) = delete;
        ~HastaAwaiter();

        bool await_ready() const noexcept { return false; }
        template <class P>
        void await_suspend(std::coroutine_handle<P> quien) {
            quien_ = quien;
            operacion_ = quien.promise().operacion;
            empezar();
        }
        void await_resume() const noexcept {}

       private:
        friend class Esperas;
        void empezar();
        void armar();
        bool vencida() const;

        Esperas& esperas_;
        double final_;
        Condicion condicion_;
        std::coroutine_handle<> quien_;
        std::uint64_t operacion_ = 0;
        Bucle::Asidero alarma_;
        bool cedio_ = false;
    };

    class PausaAwaiter {
       public:
        PausaAwaiter(Bucle& bucle, std::chrono::nanoseconds duracion) : bucle_(bucle), duracion_(duracion) {}
        PausaAwaiter(const PausaAwaiter&) = delete;
        PausaAwaiter& operator=(const PausaAwaiter&) = delete;
        ~PausaAwaiter() { *vive_ = false; }

        bool await_ready() const noexcept { return false; }
        void await_suspend(std::coroutine_handle<> quien) {
            bucle_.pausar(duracion_, [quien, vive = vive_] {
                if (*vive) quien.resume();
            });
        }
        void await_resume() const noexcept {}

       private:
        Bucle& bucle_;
        std::chrono::nanoseconds duracion_;
        std::shared_ptr<bool> vive_ = std::make_shared<bool>(true);
    };

   private:
    Bucle& bucle_;
    const Reloj& reloj_;
    const Tareas& tareas_;
    std::list<HastaAwaiter*> pendientes_;
};

}  // namespace telvane
