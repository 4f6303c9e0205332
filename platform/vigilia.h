// Keeps the machine awake while something goes on that may also come to a standstill without an end.
#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "platform/bucle.h"
#include "platform/inhibidor.h"

namespace telvane {

class Vigilia {
   public:
    // How often it looks whether anything went on: a standstill ends it after one to two of these.
    static constexpr std::chrono::seconds kQuietud{60};

    // inhibidor: may be null, then nothing is held.
    Vigilia(Bucle& bucle, Inhibidor* inhibidor, std::string porQue)
        : bucle_(bucle), inhibidor_(inhibidor), porQue_(std::move(porQue)) {}
    Vigilia(const Vigilia&) = delete;
    Vigilia& operator=(const Vigilia&) = delete;

    // It goes on: called at the start and with each sign of life. Takes what is not held yet.
    void renovar();
    void soltar();

   private:
    void armar();

    Bucle& bucle_;
    Inhibidor* inhibidor_;
    std::string porQue_;
    std::unique_ptr<Inhibidor::Guardia> guardia_;
    Bucle::Asidero alarma_;
    bool conVida_ = false;
};

}  // namespace telvane
