#include "historico/compresion.h"

#include <zstd.h>

#include <memory>
#include <new>

namespace telvane {

namespace {

// Packs a night's image against the one before in about a millisecond; more effort saves little.
constexpr int kEsfuerzo = 3;
// Reaches over a whole image and the one before it.
constexpr int kVentana = 20;

struct Soltar {
    void operator()(ZSTD_CCtx* contexto) const { ZSTD_freeCCtx(contexto); }
    void operator()(ZSTD_DCtx* contexto) const { ZSTD_freeDCtx(contexto); }
};

void exigir(std::size_t resultado) {
    if (ZSTD_isError(resultado) != 0) {
        throw ErrorCompresion("no se puede descomprimir");
    }
}

}  // namespace

std::vector<std::uint8_t> comprimir(std::span<const std::uint8_t> bytes, std::span<const std::uint8_t> base) {
    const std::unique_ptr<ZSTD_CCtx, Soltar> contexto(ZSTD_createCCtx());
    if (!contexto) throw std::bad_alloc();
    exigir(ZSTD_CCtx_setParameter(contexto.get(), ZSTD_c_compressionLevel, kEsfuerzo));
    exigir(ZSTD_CCtx_setParameter(contexto.get(), ZSTD_c_windowLog, kVentana));
    exigir(ZSTD_CCtx_setParameter(contexto.get(), ZSTD_c_checksumFlag, 0));
    if (!base.empty()) exigir(ZSTD_CCtx_refPrefix(contexto.get(), base.data(), base.size()));
    std::vector<std::uint8_t> datos(ZSTD_compressBound(bytes.size()));
    const auto largo = ZSTD_compress2(contexto.get(), datos.data(), datos.size(), bytes.data(), bytes.size());
    exigir(largo);
    datos.resize(largo);
    return datos;
}

std::vector<std::uint8_t> descomprimir(std::span<const std::uint8_t> datos, std::size_t bytes,
                                       std::span<const std::uint8_t> base) {
    const std::unique_ptr<ZSTD_DCtx, Soltar> contexto(ZSTD_createDCtx());
    if (!contexto) throw std::bad_alloc();
    if (!base.empty()) exigir(ZSTD_DCtx_refPrefix(contexto.get(), base.data(), base.size()));
    std::vector<std::uint8_t> salida(bytes);
    const auto largo =
        ZSTD_decompressDCtx(contexto.get(), salida.data(), salida.size(), datos.data(), datos.size());
    exigir(largo);
    if (largo != bytes) throw ErrorCompresion("no se puede descomprimir");
    return salida;
}

}  // namespace telvane
