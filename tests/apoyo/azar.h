// Chance for the tests that run for as long as they are told, from the seed that they are told.
#pragma once

#include <concepts>
#include <cstdlib>
#include <iterator>
#include <optional>
#include <random>

#include "platform/numero.h"

namespace telvane {

using Azar = std::mt19937;

// 0 to hasta - 1.
template <std::integral Entero>
Entero tirar(Azar& azar, Entero hasta) {
    return std::uniform_int_distribution<Entero>(0, hasta - 1)(azar);
}
template <class Lista>
const auto& uno(Azar& azar, const Lista& lista) {
    return lista[tirar(azar, std::size(lista))];
}
inline bool vez(Azar& azar, unsigned deCada) {
    return tirar(azar, deCada) == 0;
}

// A number in the environment; nullopt: it says none.
inline std::optional<unsigned> delEntorno(const char* nombre) {
    const char* valor = std::getenv(nombre);
    return valor == nullptr ? std::nullopt : numeroDe<unsigned>(valor);
}

}  // namespace telvane
