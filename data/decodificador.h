// From the bytes of a memory image to the text lines of the exports.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "data/memoria.h"
#include "data/muestra.h"

namespace telvane {

// Which stamps are good. One decoder, two rule sets.
enum class Perfil : std::uint8_t {
    estricto,  // years 2001 to 2019, nibble bounds only; a bad second record takes the first line of its block along
    ampliado   // years 2000 to 2099, real dates and times only; a good first record stays
};

// What one decoding run over an image found, for the line that tells the user. Blocks 6 to 7999 only.
struct Recuento {
    std::uint32_t escritas = 0;   // lines written
    std::uint32_t vacias = 0;     // record slots of the logger's memory that were erased: stamp all 0xFF or all 0x00
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

    // Takes the byte of memoria at this position, 0 to 63, of the current block. At 31 and 63 the record is finished
    // and its line, if any, stands in lineaMuestras. False: a position outside 0 to 63, nothing decoded.
    bool proceso(int posicion, std::uint8_t byte);
    // The same for the 64 positions in turn.
    void procesoBloque(Memoria::BloqueConst bloque);

    // Finished lines of the current block, ended by CR LF; plain ASCII. The caller takes and clears it.
    std::string lineaMuestras;

    // The record last finished.
    const Muestra& muestra() const { return muestra_; }
    bool registroValido() const { return muestra_.registroValido; }

   private:
    void terminarRegistro(std::span<const std::uint8_t, registro_muestra::kBytes> registro, bool segundo);

    Perfil perfil_;
    bool evaporacion_ = false;
    std::array<std::uint8_t, registro_muestra::kBytes> registro_{};
    Muestra muestra_;
};

}  // namespace telvane
