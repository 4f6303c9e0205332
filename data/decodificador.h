// From the bytes of a memory image to the text lines of the exports.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "data/memoria.h"
#include "data/muestra.h"
#include "data/sello.h"

namespace telvane {

// What one decoding run over an image found, for the line that tells the user. Blocks 6 to 7999 only.
struct Recuento {
    std::uint32_t escritas = 0;  // lines written
    std::uint32_t vacias =
        0;  // record slots of the logger's memory that were erased: stamp all 0xFF or all 0x00
    std::uint32_t descartadas = 0;  // slots dropped for a bad stamp, a good neighbour taken along included
    // "8178 muestras escritas, 0 registros vacios, 0 descartados por fecha u hora incorrecta"
    std::string texto() const;
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

    // The same for the 64 positions in turn, the lines written at destino instead. There must be
    // kBloqueMaximo characters of room; what the lines leave of it is overwritten.
    static constexpr std::size_t kBloqueMaximo = 192;
    struct Lineas {
        char* fin;              // past the last character
        std::uint32_t cuantas;  // 0 to 2
    };
    Lineas procesoBloque(Memoria::BloqueConst bloque, char* destino);

    // The record last finished; all zero before the first.
    Muestra muestra() const;
    // False from a bad stamp to the end of its record, and until the end of the first record of all.
    bool registroValido() const { return registroValido_; }

   private:
    void recordar(BytesMuestraConst registro, bool valido);
    // The block's lines stand from inicio on, the next goes after the last of them.
    Lineas terminarRegistro(BytesMuestraConst registro, bool valido, char* inicio, Lineas lineas) const;

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

}  // namespace telvane
