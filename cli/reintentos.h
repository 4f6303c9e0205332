// Trying again what the line broke.
#pragma once

#include <exception>

#include "cli/error_intercambio.h"
#include "consola/consola.h"
#include "consola/entorno_consola.h"
#include "link/puerto_serie.h"

namespace telvane {

class Reintentos {
   public:
    // Unless somebody says otherwise.
    static constexpr int kUsuales = 2;

    // cuantos: attempts beyond the first.
    Reintentos(EntornoConsola& entorno, Consola& consola, int cuantos)
        : entorno_(entorno), consola_(consola), quedan_(cuantos) {}

    // Tells the failure and lets the logger give the broken exchange up; rethrows it when no attempt is left.
    void gastar(const std::exception_ptr& fallo);

    // Runs the step until it ends without a failure that another attempt may mend.
    template <class Paso>
    auto correr(Paso paso) {
        while (true) {
            std::exception_ptr fallo;
            try {
                return paso();
            } catch (const ErrorIntercambio&) {
                fallo = std::current_exception();
            } catch (const ErrorPuerto&) {
                fallo = std::current_exception();
            }
            gastar(fallo);
        }
    }

   private:
    EntornoConsola& entorno_;
    Consola& consola_;
    int quedan_;
};

}  // namespace telvane
