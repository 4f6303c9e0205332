// Where a channel stands still: the samples that lie in any stretch of neighbours that spans at least so long
// and varies less than so much.
#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>

#include "calidad/limites.h"
#include "platform/anillo.h"
#include "serie_temporal/instante.h"

namespace telvane {

// Samples go in with their positions in a stream, rising; what is found are positions.
//
// It keeps the stretch that can still grow, of which equal values count as one. So it is short, and as long
// as the weather only where a channel that needs wind stands still around that limit.
class Fijo {
   public:
    using Posicion = std::uint64_t;

    enum class Amplitud : std::uint8_t {
        menor,     // below the limit's
        hastaElla  // at most the limit's
    };
    enum class Media : std::uint8_t {
        indistinta,
        mayor  // of a stretch: above the limit's wind
    };

    Fijo(const LimiteFijo& limite, Amplitud amplitud, Media media)
        : limite_(limite), amplitud_(amplitud), media_(media) {}

    struct Hallado {
        Posicion desde = 0;
        Posicion hasta = 0;  // included
    };
    // The samples that this one makes known to stand still, it is the last of them.
    std::optional<Hallado> agregar(Posicion posicion, Instante instante, Millonesimas valor);
    // No stretch goes on over this place.
    void cortar();
    // The first position of which what follows decides whether it stands still; none where all are known.
    std::optional<Posicion> abierta() const {
        if (tramos_.empty() || sabidas_ == despues_) return std::nullopt;
        return std::max(sabidas_, tramos_.front().desde);
    }

   private:
    // Neighbours of one value. sumaAntes: what the stretch's values before them are above the mean's limit.
    struct Tramo {
        Posicion desde = 0;
        Instante instante{};
        Millonesimas valor = 0;
        Millonesimas sumaAntes = 0;
    };

    bool juntos(Millonesimas a, Millonesimas b) const;
    bool nuncaSopla(Millonesimas valor) const;
    bool siempreSopla(Millonesimas valor) const;
    void recortar(Millonesimas valor);
    void anotar(Posicion posicion, Instante instante, Millonesimas valor);
    const Tramo* comienzo(Instante instante) const;
    void soltarSobrante(Instante instante, Millonesimas valor);
    void medirExtremos();

    LimiteFijo limite_;
    Amplitud amplitud_;
    Media media_;
    Anillo<Tramo> tramos_;
    Millonesimas minimo_ = 0;
    Millonesimas maximo_ = 0;
    Millonesimas suma_ = 0;
    Posicion despues_ = 0;  // after the last that went in
    Posicion sabidas_ = 0;  // all before it are known
};

}  // namespace telvane
