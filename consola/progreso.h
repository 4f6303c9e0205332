// How far a long work is: a bar on a terminal, nothing otherwise.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>

#include "consola/consola.h"

namespace telvane {

class Progreso {
   public:
    // What is counted; bytes: of each, for the speed, 0 where it says nothing.
    struct Unidad {
        std::string_view nombre;
        std::size_t bytes = 0;
    };
    Progreso(Consola& consola, const Reloj& reloj, std::size_t total, Unidad unidad);
    // hechos: 0 to total.
    void avance(std::size_t hechos);

   private:
    std::string barra(std::size_t hechos, double segundos) const;

    Consola& consola_;
    const Reloj& reloj_;
    std::size_t total_;
    Unidad unidad_;
    std::chrono::nanoseconds inicio_;
    std::chrono::nanoseconds dibujado_;
};

}  // namespace telvane
