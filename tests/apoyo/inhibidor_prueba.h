// A system that counts who keeps it awake.
#pragma once

#include <memory>
#include <string>

#include "platform/inhibidor.h"

namespace telvane {

class InhibidorPrueba final : public Inhibidor {
   public:
    std::unique_ptr<Guardia> inhibir(const std::string& porQue) override {
        ++pedidas;
        motivo = porQue;
        if (rehusar) return nullptr;
        return std::make_unique<Contada>(vigentes);
    }

    int pedidas = 0;
    int vigentes = 0;
    bool rehusar = false;
    std::string motivo;

   private:
    class Contada final : public Guardia {
       public:
        explicit Contada(int& vigentes) : vigentes_(vigentes) { ++vigentes_; }
        Contada(const Contada&) = delete;
        Contada& operator=(const Contada&) = delete;
        ~Contada() override { --vigentes_; }

       private:
        int& vigentes_;
    };
};

}  // namespace telvane
