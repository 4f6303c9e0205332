// Images as they are kept: packed, most of them as what is new against an earlier one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <stdexcept>
#include <vector>

struct ZSTD_DCtx_s;

namespace telvane {

// What is kept is not what was packed. The text, in Spanish, says what is wrong.
class ErrorCompresion : public std::runtime_error {
   public:
    using std::runtime_error::runtime_error;
};

// base: what the unpacking will have at hand; empty: nothing.
std::vector<std::uint8_t> comprimir(std::span<const std::uint8_t> bytes,
                                    std::span<const std::uint8_t> base = {});

// Whether they carry a checksum of what was packed, which every unpacking compares. Those of older versions
// carry none.
bool conSuma(std::span<const std::uint8_t> datos);

// How many bytes were packed, as what came of them says. Throws ErrorCompresion where it does not, or where
// they are more than an image has.
std::size_t largoDe(std::span<const std::uint8_t> datos);

// For one image after the other.
class Descompresor {
   public:
    Descompresor();
    // Fills salida. base: the same that was given to the packing. Throws ErrorCompresion.
    void abrir(std::span<const std::uint8_t> datos, std::span<const std::uint8_t> base,
               std::vector<std::uint8_t>& salida);

   private:
    struct Soltar {
        void operator()(ZSTD_DCtx_s* contexto) const;
    };
    std::unique_ptr<ZSTD_DCtx_s, Soltar> contexto_;
};

}  // namespace telvane
