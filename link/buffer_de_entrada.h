// What came on a line and was not taken yet.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "link/puerto_serie.h"

namespace telvane {

class BufferDeEntrada {
   public:
    static constexpr std::size_t kSinCota = std::numeric_limits<std::size_t>::max();

    // The most that is taken over at once: a line that never stops would keep its reader for ever.
    static constexpr std::size_t kTrozo = 4096;
    static constexpr std::size_t kTrozosDeUnaVez = 64;

    // Takes over what the system holds, up to this many bytes in all; those beyond are lost. Throws
    // ErrorPuerto, and keeps what came before it.
    void llenar(PuertoSerie& puerto, std::size_t cota = kSinCota);
    // Whether bytes were lost since this was last asked.
    bool desbordado();
    std::size_t esperan() const { return bytes_.size() - tomados_; }
    // The next of them; there must be one.
    std::uint8_t tomar() { return bytes_[tomados_++]; }
    // As many as asked for, or fewer if fewer wait.
    std::vector<std::uint8_t> tomar(std::size_t cuantos);
    // Forgets what waits.
    void vaciar();

   private:
    std::vector<std::uint8_t> bytes_;  // those that wait: bytes_[tomados_..]
    std::size_t tomados_ = 0;
    bool desbordado_ = false;
};

}  // namespace telvane
