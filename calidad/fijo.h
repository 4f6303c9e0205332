// Where a channel stands still: the samples that lie in any stretch of neighbours that spans at least so long
// and varies less than so much.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <optional>

#include "calidad/limites.h"
#include "platform/anillo.h"
#include "serie_temporal/instante.h"

namespace telvane {

// Samples go in with their positions in a stream, rising; what is found are positions.
//
// Weather moves, so that most samples need no look: those that may begin a stretch wait until it would be
// long enough, and are looked at from its end until one has moved; a stretch that lasts to half of that is
// followed value by value. Of one that is followed equal values count as one. So it is short, and as long as
// the weather only where a channel that needs wind stands still around that limit.
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
        Posicion desde{};
        Posicion hasta{};  // included
    };
    // The samples that this one makes known to stand still, it is the last of them.
    std::optional<Hallado> agregar(Posicion posicion, Instante instante, Millonesimas valor) {
        recientes_.push_back({.posicion = posicion, .instante = instante, .valor = valor});
        despues_ = posicion + 1;
        if (!siguiendo_ && instante - recientes_.front().instante < limite_.dura) return std::nullopt;
        return siguiendo_ ? seguir() : mirarAtras();
    }
    // No stretch goes on over this place.
    void cortar();
    // The first position of which what follows decides whether it stands still; none where all are known.
    std::optional<Posicion> abierta() const {
        if (sabidas_ == despues_) return std::nullopt;
        if (siguiendo_) return std::max(sabidas_, tramos_.front().desde);
        return std::max(sabidas_, recientes_.front().posicion);
    }

   private:
    struct Reciente {
        Posicion posicion{};
        Instante instante{};
        Millonesimas valor{};
    };
    // Neighbours of one value. sumaAntes: what the stretch's values before them are above the mean's limit.
    struct Tramo {
        Posicion desde{};
        Instante instante{};
        Millonesimas valor{};
        Millonesimas sumaAntes{};
    };

    std::optional<Hallado> mirarAtras();
    std::optional<Hallado> seguir();
    std::optional<Hallado> agregarAlTramo(const Reciente& reciente);
    void olvidarRecientes(Instante instante);

    bool juntos(Millonesimas a, Millonesimas b) const;
    bool nuncaSopla(Millonesimas valor) const;
    bool siempreSopla(Millonesimas valor) const;
    std::chrono::seconds quePromete() const;
    void recortar(Millonesimas valor);
    void anotar(const Reciente& reciente);
    const Tramo* comienzo(Instante instante) const;
    void soltarSobrante(Instante instante, Millonesimas valor);
    void medirExtremos();

    LimiteFijo limite_;
    Amplitud amplitud_;
    Media media_;
    // Not siguiendo_: all that may begin a stretch. Else those of half the time that one must last.
    Anillo<Reciente> recientes_;
    bool siguiendo_ = false;
    Anillo<Tramo> tramos_;  // siguiendo_: never empty
    Millonesimas minimo_{};
    Millonesimas maximo_{};
    Millonesimas suma_{};
    Posicion despues_ = 0;  // after the last that went in
    Posicion sabidas_ = 0;  // all before it are known
};

}  // namespace telvane
