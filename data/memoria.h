// The logger's memory image.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>
#include <span>

#include "link/protocolo.h"

namespace telvane {

// 18001 blocks (0 to 18000) of 64 bytes; a download fills 0 to 4095. Zero when the program starts.
class Memoria {
   public:
    static constexpr std::size_t kBloques = 18001;
    using Bloque = std::span<std::uint8_t, kBytesBloque>;
    using BloqueConst = std::span<const std::uint8_t, kBytesBloque>;

    Memoria() : bytes_(reservar()) {}

    Bloque bloque(std::size_t numero) { return Bloque(bytes_.get() + numero * kBytesBloque, kBytesBloque); }
    BloqueConst bloque(std::size_t numero) const {
        return BloqueConst(bytes_.get() + numero * kBytesBloque, kBytesBloque);
    }
    // The first blocks as one stretch.
    std::span<std::uint8_t> primeros(std::size_t bloques) { return {bytes_.get(), bloques * kBytesBloque}; }
    // The logger's own memory, 262144 bytes: what a base file holds.
    std::span<std::uint8_t> imagen() { return {bytes_.get(), kBytesMemoria}; }
    std::span<const std::uint8_t> imagen() const { return {bytes_.get(), kBytesMemoria}; }

   private:
    struct Liberar {
        void operator()(std::uint8_t* bytes) const { std::free(bytes); }  // NOLINT(*-no-malloc)
    };
    using Bytes = std::unique_ptr<std::uint8_t[], Liberar>;

    // The system hands out pages of zeros as they are touched; most of these never are.
    static Bytes reservar() {
        auto* bytes = std::calloc(kBloques, kBytesBloque);  // NOLINT(*-no-malloc)
        if (bytes == nullptr) throw std::bad_alloc();
        return Bytes(static_cast<std::uint8_t*>(bytes));
    }

    Bytes bytes_;
};

// Blocks 0 to 5 are the logger's header.
inline constexpr std::int32_t kPrimerBloqueConMuestras = 6;

// Last block that the decoding loops visit, the bar's maximum, and the end value of a download's counter
// (2 handshake replies and 4096 blocks).
inline constexpr std::int32_t kUltimoBloque = kAcuses + kBloquesMemoria;

}  // namespace telvane
