// What a memory image says by itself, whatever else the archive holds. Images have any length up to the
// logger's memory; what is missing at the end was not downloaded.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "data/muestra.h"
#include "link/protocolo.h"
#include "serie_temporal/instante.h"

namespace telvane {

using BytesImagen = std::span<const std::uint8_t>;

// A sample as the archive knows it: by its stamp and its bytes.
struct Fila {
    Instante instante{};
    BytesMuestra registro{};
    // Whether it is what counts of its stamp.
    bool cuenta = true;

    // By stamp, then by bytes.
    bool operator<(const Fila& otra) const {
        return instante != otra.instante ? instante < otra.instante : registro < otra.registro;
    }
    bool esLaMisma(const Fila& otra) const { return instante == otra.instante && registro == otra.registro; }
};

// A slot that the image has whole.
inline BytesMuestraConst enRanura(BytesImagen imagen, std::size_t ranura) {
    return imagen.subspan(ranura * registro_muestra::kBytes).first<registro_muestra::kBytes>();
}

// The distinct samples in their order.
std::vector<Fila> filasDe(BytesImagen imagen);
// The slots of the distinct ones of these moments, both included, in their order.
std::vector<std::uint16_t> ranurasEnOrden(BytesImagen imagen, Instante desde, Instante hasta);

struct CuentaDeRanuras {
    std::int64_t vacias = 0;       // never written, or erased
    std::int64_t descartadas = 0;  // with a stamp that is none
};
// Of the image's whole slots.
CuentaDeRanuras contarRanuras(BytesImagen imagen);

// Slots whose stamp is not later than that of the slot before: somebody set the clock back, or the memory
// begins anew there.
std::int64_t retrocesosDe(BytesImagen imagen);

constexpr bool esParcial(BytesImagen imagen) {
    return imagen.size() < kBytesMemoria;
}

// The serial number's 8 digits in the header, as the programs show them; nullopt where the header is missing
// or erased.
std::optional<std::string> serieDe(BytesImagen imagen);
// The header's clock; nullopt where it is no real date and time.
std::optional<Instante> relojDe(BytesImagen imagen);

// How two images of one serial number stand to each other in the slots that both reach: at least three
// records of equal stamps tell whether they come from one memory.
enum class Trato { ajenas, concuerdan, discrepan };
Trato comparar(BytesImagen una, BytesImagen otra);

// Whether one of them says much of the other: an eighth of the slots that both have are the same.
bool seParecen(BytesImagen una, BytesImagen otra);

// Whether every sample of the part stands in the same slot of the other.
bool contiene(BytesImagen entera, BytesImagen parte);

// The samples in slots whose bytes differ from the other image's, in their order and distinct.
std::vector<Fila> filasQueNoEstanEn(BytesImagen imagen, BytesImagen otra);

}  // namespace telvane
