#include "cli/reintentos.h"

#include <chrono>

#include <fmt/format.h>

namespace telvane {

namespace {

// Long enough for the logger to give the broken exchange up, and for an adapter to come back.
constexpr std::chrono::seconds kEntreIntentos{2};

void decir(Consola& consola, const std::exception_ptr& fallo) {
    try {
        std::rethrow_exception(fallo);
    } catch (const std::exception& error) {
        consola.aviso(error.what());
    }
}

}  // namespace

void Reintentos::gastar(const std::exception_ptr& fallo) {
    if (quedan_-- <= 0) std::rethrow_exception(fallo);
    decir(consola_, fallo);
    consola_.aviso(fmt::format("Se vuelve a empezar; reintentos que quedan: {}.", quedan_));
    pausar(entorno_, kEntreIntentos);
}

}  // namespace telvane
