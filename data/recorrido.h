// One decoding run over the memory image: its good records one by one, for whatever is written of them.
#pragma once

#include <algorithm>
#include <cstdint>

#include "data/decodificador.h"
#include "data/memoria.h"
#include "data/sello.h"

namespace telvane {

// What the blocks of the logger's header and blocks 8000 and above yield is decoded and dropped.
inline constexpr std::int32_t kFinBloquesConMuestras = 8000;

namespace recorrido {

// Slots of a block that were never written, or erased.
inline std::uint32_t borradas(Memoria::BloqueConst bloque) {
    return (sello::borrado(bloque.first<registro_muestra::kBytes>()) ? 1u : 0u) +
           (sello::borrado(bloque.last<registro_muestra::kBytes>()) ? 1u : 0u);
}

// Slots of a block that gave no record and would have given one in the extended profile.
inline std::uint32_t perdidas(const RegistrosBuenos& buenos) {
    using registro_muestra::kBytes;
    const auto valen = [](BytesMuestraConst registro) { return sello::bueno(registro, Perfil::ampliado); };
    return (!buenos.primero && valen(buenos.bloque.first<kBytes>()) ? 1u : 0u) +
           (!buenos.segundo && valen(buenos.bloque.last<kBytes>()) ? 1u : 0u);
}

// Why a block's two slots gave less than two records. Slots beyond the logger's own memory are empty by
// nature and are not worth a count.
inline void contarSinMuestra(Recuento& recuento, std::int32_t numero, const RegistrosBuenos& buenos) {
    const auto vacias = borradas(buenos.bloque);
    if (numero < static_cast<std::int32_t>(kBloquesMemoria)) recuento.vacias += vacias;
    recuento.descartadas += 2 - buenos.cuantos() - vacias;
    recuento.valenAmpliado += perdidas(buenos);
}

}  // namespace recorrido

// Decodes blocks 0 to ultimoBloque. Calls alRegistro(registro) for each good record and alBloque(numero)
// after each block.
template <typename AlRegistro, typename AlBloque>
[[gnu::always_inline]] inline Recuento recorrerMuestras(const Memoria& memoria, Decodificador& decodificador,
                                                        std::int32_t ultimoBloque, AlRegistro&& alRegistro,
                                                        AlBloque&& alBloque) {
    const auto hasta = std::min(ultimoBloque, static_cast<std::int32_t>(Memoria::kBloques) - 1) + 1;
    Recuento recuento;
    const auto bloque = [&](std::int32_t numero) { return memoria.bloque(static_cast<std::size_t>(numero)); };
    const auto soltar = [&](std::int32_t desde, std::int32_t fin) {
        for (std::int32_t numero = desde; numero < fin; ++numero) {
            decodificador.procesoBloque(bloque(numero));
            alBloque(numero);
        }
    };
    soltar(0, std::min(kPrimerBloqueConMuestras, hasta));
    for (std::int32_t numero = kPrimerBloqueConMuestras; numero < std::min(kFinBloquesConMuestras, hasta);
         ++numero) {
        const auto buenos = decodificador.procesoBloque(bloque(numero));
        buenos.recorrer(alRegistro);
        recuento.escritas += buenos.cuantos();
        if (buenos.cuantos() < 2) recorrido::contarSinMuestra(recuento, numero, buenos);
        alBloque(numero);
    }
    soltar(kFinBloquesConMuestras, hasta);
    return recuento;
}

}  // namespace telvane
