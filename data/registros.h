// The sample records of a memory image one by one, for those who want values and not lines.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

#include "data/memoria.h"
#include "data/muestra.h"
#include "data/sello.h"

namespace telvane {

// Slots of 32 bytes, counted from the start of the image; the first twelve are the logger's header.
inline constexpr std::size_t kPrimeraRanura =
    kPrimerBloqueConMuestras * (kBytesBloque / registro_muestra::kBytes);
inline constexpr std::size_t kRanuras = kBytesMemoria / registro_muestra::kBytes;

// Calls para(ranura, registro) for every whole record with a good stamp of an image of any length, in order.
// Which are good is what the extended profile says: these are the records that it writes a line for.
template <typename Para>
void recorrerRegistros(std::span<const std::uint8_t> imagen, Para&& para) {
    constexpr std::size_t kBytes = registro_muestra::kBytes;
    const std::size_t hasta = std::min(imagen.size() / kBytes, kRanuras);
    for (std::size_t ranura = kPrimeraRanura; ranura < hasta; ++ranura) {
        const auto registro = imagen.subspan(ranura * kBytes).first<kBytes>();
        if (sello::bueno(registro, Perfil::ampliado)) para(ranura, BytesMuestraConst(registro));
    }
}

}  // namespace telvane
