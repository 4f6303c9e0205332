// The event loop, as the core sees it. The window runs it on the toolkit's loop, the console tool on poll(2),
// the tests on a clock of their own. One thread.
#pragma once

#include <chrono>
#include <deque>
#include <exception>
#include <functional>
#include <memory>

namespace telvane {

class Bucle {
   public:
    using Accion = std::function<void()>;
    using Duracion = std::chrono::nanoseconds;

    // Something the loop watches; destroying it ends the watch, even for an event that a pause holds back.
    class Vigilancia {
       public:
        virtual ~Vigilancia() = default;
    };
    using Asidero = std::unique_ptr<Vigilancia>;

    // A watched descriptor: silent while not active.
    class Lectura : public Vigilancia {
       public:
        virtual void activa(bool si) = 0;
    };

    Bucle() = default;
    Bucle(const Bucle&) = delete;
    Bucle& operator=(const Bucle&) = delete;
    virtual ~Bucle() = default;

    // Calls accion each time the descriptor can be read, or has hung up, until the watch is destroyed.
    [[nodiscard]] Asidero vigilarLectura(int descriptor, Accion accion);
    // Calls accion once, plazo from now on the monotonic clock (0 or less: as soon as the loop turns; at most
    // 24 days, which is as far as the toolkit counts).
    [[nodiscard]] Asidero alarma(Duracion plazo, Accion accion);

    // Delivers an event now, or after the running pause.
    void entregar(const Accion& accion);
    // Holds every event back for the duration, then calls luego and delivers them in their order of arrival.
    // This is the wait that does not yield; the shell keeps painting meanwhile. One at a time.
    void pausar(Duracion duracion, Accion luego);
    bool enPausa() const { return enPausa_; }

    // Called after every delivered event: the moment at which a wait that yields looks at its condition.
    void alTerminarSuceso(Accion accion) { tras_ = std::move(accion); }
    // Called with what an event handler did not expect; without it the exception leaves the loop.
    void alFallar(std::function<void(std::exception_ptr)> accion) { alFallar_ = std::move(accion); }

   protected:
    // What a concrete loop gives: the bare sources, which know nothing of pauses.
    virtual std::unique_ptr<Lectura> fuenteLectura(int descriptor, Accion accion) = 0;
    virtual Asidero fuenteAlarma(Duracion plazo, Accion accion) = 0;

   private:
    void llamar(const Accion& accion);
    void reanudar();

    bool enPausa_ = false;
    Asidero finDePausa_;
    std::deque<Accion> aplazadas_;
    Accion tras_;
    std::function<void(std::exception_ptr)> alFallar_;
};

}  // namespace telvane
