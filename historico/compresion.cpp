#include "historico/compresion.h"

#include <zstd.h>
#include <zstd_errors.h>

#include <memory>
#include <new>

#include "link/protocolo.h"

namespace telvane {

namespace {

// Upon another image the quickest that is still thorough: a night takes 1.5 KB; more effort saves 120 bytes.
constexpr int kEsfuerzo = 1;
// An image by itself without shorter codes for frequent bytes: 80 KB instead of 70, unpacked in half the
// time.
constexpr int kEsfuerzoSola = -1;
// Reaches over a whole image and the one before it.
constexpr int kVentana = 20;

struct Soltar {
    void operator()(ZSTD_CCtx* contexto) const { ZSTD_freeCCtx(contexto); }
};

constexpr const char* kNoSePuede = "no se puede descomprimir";

void exigir(std::size_t resultado) {
    if (ZSTD_isError(resultado) == 0) return;
    if (ZSTD_getErrorCode(resultado) == ZSTD_error_memory_allocation) throw std::bad_alloc();
    throw ErrorCompresion(kNoSePuede);
}

}  // namespace

std::vector<std::uint8_t> comprimir(std::span<const std::uint8_t> bytes, std::span<const std::uint8_t> base) {
    const std::unique_ptr<ZSTD_CCtx, Soltar> contexto(ZSTD_createCCtx());
    if (!contexto) throw std::bad_alloc();
    exigir(ZSTD_CCtx_setParameter(contexto.get(), ZSTD_c_compressionLevel,
                                  base.empty() ? kEsfuerzoSola : kEsfuerzo));
    exigir(ZSTD_CCtx_setParameter(contexto.get(), ZSTD_c_windowLog, kVentana));
    exigir(ZSTD_CCtx_setParameter(contexto.get(), ZSTD_c_checksumFlag, 1));
    if (!base.empty()) exigir(ZSTD_CCtx_refPrefix(contexto.get(), base.data(), base.size()));
    // Room for what cannot be packed; a night touches a page of it.
    const auto cabe = ZSTD_compressBound(bytes.size());
    const auto datos = std::make_unique_for_overwrite<std::uint8_t[]>(cabe);
    const auto largo = ZSTD_compress2(contexto.get(), datos.get(), cabe, bytes.data(), bytes.size());
    exigir(largo);
    return {datos.get(), datos.get() + largo};
}

bool conSuma(std::span<const std::uint8_t> datos) {
    // The frame header's descriptor and its flag (RFC 8878, 3.1.1.1.1).
    constexpr std::size_t kDescriptor = 4;
    constexpr unsigned kSuma = 1U << 2;
    return datos.size() > kDescriptor && (datos[kDescriptor] & kSuma) != 0;
}

std::size_t largoDe(std::span<const std::uint8_t> datos) {
    const auto largo = ZSTD_getFrameContentSize(datos.data(), datos.size());
    // The two that are none are greater than any.
    if (largo > kBytesMemoria) throw ErrorCompresion(kNoSePuede);
    return largo;
}

Descompresor::Descompresor() : contexto_(ZSTD_createDCtx()) {
    if (!contexto_) throw std::bad_alloc();
}
void Descompresor::Soltar::operator()(ZSTD_DCtx_s* contexto) const {
    ZSTD_freeDCtx(contexto);
}
void Descompresor::abrir(std::span<const std::uint8_t> datos, std::span<const std::uint8_t> base,
                         std::vector<std::uint8_t>& salida) {
    salida.resize(largoDe(datos));
    exigir(ZSTD_DCtx_refPrefix(contexto_.get(), base.data(), base.size()));
    const auto largo =
        ZSTD_decompressDCtx(contexto_.get(), salida.data(), salida.size(), datos.data(), datos.size());
    exigir(largo);
    if (largo != salida.size()) throw ErrorCompresion(kNoSePuede);
}

}  // namespace telvane
