// A console program's process: the signals that end it.
#pragma once

#include "consola/entorno_consola.h"
#include "platform/bucle_posix.h"
#include "platform/flujos.h"

namespace telvane {

// While it lives, a signal that asks the program to end stands in the environment.
class SenalesConsola {
   public:
    SenalesConsola(Bucle& bucle, EntornoConsola& entorno);
    SenalesConsola(const SenalesConsola&) = delete;
    SenalesConsola& operator=(const SenalesConsola&) = delete;
    ~SenalesConsola();

   private:
    EntornoConsola& entorno_;
    Senales senales_;
};

}  // namespace telvane
