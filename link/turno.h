// Whose turn it is on the logger's line: whether an exchange is in progress, from which no other one may take
// the port.
#pragma once

#include <chrono>
#include <functional>

#include "platform/bucle.h"
#include "platform/reloj.h"

namespace telvane {

class Turno {
   public:
    // Silence after which an exchange counts as standing still; another one may take its port then.
    static constexpr std::chrono::seconds kQuietud{1};

    Turno(const Bucle& bucle, const Reloj& reloj) : bucle_(bucle), reloj_(reloj) {}
    Turno(const Turno&) = delete;
    Turno& operator=(const Turno&) = delete;

    // Whether the channel of an exchange is open that goes on after its operation has ended.
    void canalEnUso(std::function<bool()> pregunta) { canalEnUso_ = std::move(pregunta); }

    // From an operation's click to its end; what it asks the operator meanwhile counts as progress.
    class Operacion {
       public:
        explicit Operacion(Turno& turno) : turno_(turno) { ++turno_.operaciones_; }
        Operacion(const Operacion&) = delete;
        Operacion& operator=(const Operacion&) = delete;
        ~Operacion() { --turno_.operaciones_; }

       private:
        Turno& turno_;
    };
    // While an operation waits for the logger. It counts as progress for as long as the wait is meant to
    // last, and a second more: one that a changed clock makes longer stands still.
    class Espera {
       public:
        Espera(Turno& turno, std::chrono::nanoseconds plazo);
        Espera(const Espera&) = delete;
        Espera& operator=(const Espera&) = delete;
        ~Espera();

       private:
        Turno& turno_;
    };
    // The logger sent something.
    void vive();

    bool enProgreso() const;
    // Time until an exchange that says nothing more stands still; 0: none is counted.
    std::chrono::nanoseconds falta() const;

   private:
    void contar(std::chrono::nanoseconds plazo);

    const Bucle& bucle_;
    const Reloj& reloj_;
    std::function<bool()> canalEnUso_;
    int operaciones_ = 0;
    int esperas_ = 0;
    std::chrono::nanoseconds hasta_{0};
};

}  // namespace telvane
