// The sixteen buffers in which the samples of a decoding run are collected as text.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "data/decodificador.h"
#include "data/memoria.h"

namespace telvane {

// How a sample is written.
enum class Redaccion : std::uint8_t { linea, objeto };

// Blocks 6 to 499 go to the first buffer, 500 to 999 to the second, ... 7500 to 7999 to the sixteenth.
class BloquesTexto {
   public:
    static constexpr std::size_t kBuferes = 16;
    static constexpr std::int32_t kPorBufer = 500;

    // Room for the longest samples of all blocks.
    static std::size_t capacidad(Redaccion redaccion);

    // cabecera, pie: what the whole text has before its first sample and after its last.
    explicit BloquesTexto(std::string cabecera = {}, std::string pie = {},
                          Redaccion redaccion = Redaccion::linea)
        : cabecera_(std::move(cabecera)), pie_(std::move(pie)), redaccion_(redaccion) {}

    // Decodes blocks 0 to ultimoBloque in place of what stood here. alBloque, if given, is told each block's
    // number after it is done.
    Recuento decodificar(const Memoria& memoria, Decodificador& decodificador, std::int32_t ultimoBloque,
                         const std::function<void(std::int32_t)>& alBloque = {});

    // One buffer's lines, indice 0 to 15; valid until the next run.
    std::string_view bufer(std::size_t indice) const;
    // The buffers in order; valid until the next run.
    std::string_view unidos() const { return {lineas(), finales_.back()}; }
    // With what goes before and after them; needs a run, valid until the next.
    std::string_view entero() const {
        return {texto_.get(), cabecera_.size() + finales_.back() + pie_.size()};
    }

   private:
    // escribir(p, registro, evaporacion) writes a sample at p and gives the place after it.
    template <typename Escribir>
    Recuento llenar(const Memoria& memoria, Decodificador& decodificador, std::int32_t ultimoBloque,
                    const std::function<void(std::int32_t)>& alBloque, Escribir escribir);
    const char* lineas() const { return texto_.get() + (texto_ ? cabecera_.size() : 0); }

    std::string cabecera_;
    std::string pie_;
    Redaccion redaccion_;
    // One text; each buffer begins where the one before it ends. Taken when first used; the system backs only
    // the pages that are written.
    std::unique_ptr<char[]> texto_;
    std::array<std::size_t, kBuferes> finales_{};
};

}  // namespace telvane
