// From the bytes of a memory image to its good sample records.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>

#include "data/medidas.h"
#include "data/memoria.h"
#include "data/muestra.h"
#include "data/sello.h"

namespace telvane {

// What one decoding run over an image found, for the line that tells the user. Blocks 6 to 7999 only.
struct Recuento {
    std::uint32_t escritas = 0;  // records that were written
    // Erased slots of the logger's own memory: stamp all 0xFF or all 0x00.
    std::uint32_t vacias = 0;
    std::uint32_t descartadas = 0;    // slots dropped for a bad stamp, a good neighbour taken along included
    std::uint32_t valenAmpliado = 0;  // of those, slots that the extended profile would have kept
    // "8178 muestras escritas, 0 registros vacios, 0 descartados por fecha u hora incorrecta". Where most of
    // what was dropped would have been kept, the line names the option: " (8178 valen con --perfil
    // ampliado)".
    std::string texto() const;
};

// The named record with these values; date and time stay at their defaults.
Muestra muestraDe(const Medidas& valores);

// A block's 0 to 2 good records, in their order.
struct RegistrosBuenos {
    Memoria::BloqueConst bloque;
    bool primero;
    bool segundo;

    std::uint32_t cuantos() const { return (primero ? 1u : 0u) + (segundo ? 1u : 0u); }
    // Calls para(registro) for each of them.
    template <typename Para>
    [[gnu::always_inline]] void recorrer(Para&& para) const {
        if (primero) para(BytesMuestraConst(bloque.first<registro_muestra::kBytes>()));
        if (segundo) para(BytesMuestraConst(bloque.last<registro_muestra::kBytes>()));
    }
};

// The decoder's state between calls; it carries registroValido from one run to the next.
class Decodificador {
   public:
    explicit Decodificador(Perfil perfil = Perfil::estricto) : perfil_(perfil) {}

    // Selects the evaporation variant.
    void evaporacion(bool si) { evaporacion_ = si; }
    bool evaporacion() const { return evaporacion_; }

    // Takes the byte of memoria at this position, 0 to 63, of the current block. At 31 and 63 the record is
    // finished and its line, if any, stands in lineaMuestras. False: a position outside 0 to 63, nothing
    // decoded.
    bool proceso(int posicion, std::uint8_t byte);
    // Finished lines of the current block, ended by CR LF; plain ASCII. The caller takes and clears it.
    std::string lineaMuestras;

    // The same for the 64 positions in turn: the records that the block's lines are of. lineaMuestras stays
    // as it is.
    RegistrosBuenos procesoBloque(Memoria::BloqueConst bloque);

    // The record last finished; all zero before the first.
    Muestra muestra() const;
    // False from a bad stamp to the end of its record, and until the end of the first record of all.
    bool registroValido() const { return registroValido_; }

   private:
    void recordar(BytesMuestraConst registro, bool valido);
    // In the strict profile a bad second record takes the first one along.
    bool seLlevaAlPrimero(bool segundoValido) const { return perfil_ == Perfil::estricto && !segundoValido; }

    Perfil perfil_;
    bool evaporacion_ = false;
    bool registroValido_ = false;
    BytesMuestra registro_{};  // being collected byte by byte

    // The record last finished, if any.
    BytesMuestra terminado_{};
    bool hayTerminado_ = false;
    bool terminadoValido_ = false;
    // Raw values of the extra channels, kept while records of the plain variant come.
    std::uint16_t auxiliar2_ = 0;
    std::uint16_t evaporacionMm_ = 0;
};

inline RegistrosBuenos Decodificador::procesoBloque(Memoria::BloqueConst bloque) {
    constexpr auto kBytes = registro_muestra::kBytes;
    // The end of the first record leaves the flag true, whatever it was.
    const bool primero =
        std::exchange(registroValido_, true) && sello::bueno(bloque.first<kBytes>(), perfil_);
    const bool segundo = sello::bueno(bloque.last<kBytes>(), perfil_);
    recordar(bloque.last<kBytes>(), segundo);
    return {bloque, primero && !seLlevaAlPrimero(segundo), segundo};
}

inline void Decodificador::recordar(BytesMuestraConst registro, bool valido) {
    std::copy_n(registro.data(), registro_muestra::kBytes, terminado_.data());
    hayTerminado_ = true;
    terminadoValido_ = valido;
    if (evaporacion_) {
        auxiliar2_ = crudoDeDosBytes(registro, registro_muestra::kAuxiliar2);
        evaporacionMm_ = crudoDeDosBytes(registro, registro_muestra::kEvaporacion);
    }
}

}  // namespace telvane
