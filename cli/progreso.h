// How far a download is: a bar on a terminal, a line now and then otherwise.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>

#include "cli/consola.h"

namespace telvane {

class Progreso {
   public:
    Progreso(Consola& consola, const Reloj& reloj, std::size_t total);
    // hechos: blocks that are here, 0 to total.
    void avance(std::size_t hechos);

   private:
    std::string barra(std::size_t hechos, double segundos) const;

    Consola& consola_;
    const Reloj& reloj_;
    std::size_t total_;
    std::chrono::nanoseconds inicio_;
    std::chrono::nanoseconds dibujado_;
};

}  // namespace telvane
