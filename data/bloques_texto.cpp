#include "data/bloques_texto.h"

#include <algorithm>

namespace telvane {

namespace {

constexpr std::int32_t kBloquesGuardados =
    static_cast<std::int32_t>(BloquesTexto::kBuferes) * BloquesTexto::kPorBufer;

// The last place is for the blocks that are decoded and dropped.
constexpr std::size_t kCapacidad =
    static_cast<std::size_t>(kBloquesGuardados + 1) * Decodificador::kBloqueMaximo;

// One run over an image. Stretches are given as first block and the one after the last.
struct Corrida {
    const Memoria& memoria;
    Decodificador& decodificador;
    const std::function<void(std::int32_t)>& alBloque;
    char* fin;  // of the text so far
    Recuento recuento{};

    Memoria::BloqueConst bloque(std::int32_t numero) const {
        return memoria.bloque(static_cast<std::size_t>(numero));
    }

    void soltar(std::int32_t desde, std::int32_t hasta) {
        for (std::int32_t numero = desde; numero < hasta; ++numero) {
            decodificador.procesoBloque(bloque(numero), fin);
            if (alBloque) alBloque(numero);
        }
    }

    void guardar(std::int32_t desde, std::int32_t hasta) {
        for (std::int32_t numero = desde; numero < hasta; ++numero) {
            const auto lineas = decodificador.procesoBloque(bloque(numero), fin);
            fin = lineas.fin;
            recuento.escritas += lineas.cuantas;
            if (lineas.cuantas < 2) contarSinLinea(numero, lineas.cuantas);
            if (alBloque) alBloque(numero);
        }
    }

    // Why the rest of a block's two slots gave no line. Slots beyond the logger's own memory are empty by
    // nature and are not worth a count.
    void contarSinLinea(std::int32_t numero, std::uint32_t lineas) {
        const std::uint32_t borrados =
            (sello::borrado(bloque(numero).first<registro_muestra::kBytes>()) ? 1u : 0u) +
            (sello::borrado(bloque(numero).last<registro_muestra::kBytes>()) ? 1u : 0u);
        if (numero < static_cast<std::int32_t>(kBloquesMemoria)) recuento.vacias += borrados;
        recuento.descartadas += 2 - lineas - borrados;
    }
};

}  // namespace

Recuento BloquesTexto::decodificar(const Memoria& memoria, Decodificador& decodificador,
                                   std::int32_t ultimoBloque,
                                   const std::function<void(std::int32_t)>& alBloque) {
    if (!texto_) {
        texto_ = std::make_unique_for_overwrite<char[]>(cabecera_.size() + kCapacidad + pie_.size());
        std::copy(cabecera_.begin(), cabecera_.end(), texto_.get());
    }
    char* const inicio = texto_.get() + cabecera_.size();
    const auto hasta = std::min(ultimoBloque, static_cast<std::int32_t>(Memoria::kBloques) - 1) + 1;
    Corrida corrida{memoria, decodificador, alBloque, inicio};
    corrida.soltar(0, std::min(kPrimerBloque, hasta));
    for (std::int32_t i = 0; i < static_cast<std::int32_t>(kBuferes); ++i) {
        corrida.guardar(std::max(kPrimerBloque, i * kPorBufer), std::min((i + 1) * kPorBufer, hasta));
        finales_[static_cast<std::size_t>(i)] = static_cast<std::size_t>(corrida.fin - inicio);
    }
    corrida.soltar(kBloquesGuardados, hasta);
    std::copy(pie_.begin(), pie_.end(), corrida.fin);
    return corrida.recuento;
}

std::string_view BloquesTexto::bufer(std::size_t indice) const {
    const auto desde = indice == 0 ? 0 : finales_[indice - 1];
    return {lineas() + desde, finales_[indice] - desde};
}

}  // namespace telvane
