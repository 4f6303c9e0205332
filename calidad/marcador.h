// The quality marks of a station's samples, which depend on their neighbours and on nothing else: not on the
// period that somebody asked for, so the whole series goes in, from its first sample on.
//
//     Marcador marcador(limites.de("02080050"), [&](const Juzgada& j) { escribir(j.marcas.texto()); });
//     while (auto o = siguiente()) marcador.agregar(*o);
//     marcador.terminar();
//
// Each sample comes out once, in the order in which they went in, when what follows cannot change its marks:
// at most some dozens of samples and the time that a channel must stand still (12 hours) later; with a wind
// around its limit as long as that lasts. A caller with more to say of a sample keeps it in a queue of its
// own.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "calidad/fijo.h"
#include "calidad/limites.h"
#include "calidad/marcas.h"
#include "platform/anillo.h"
#include "serie_temporal/observacion.h"
#include "serie_temporal/ritmo.h"

namespace telvane {

struct Juzgada {
    Observacion observacion;
    Marcas marcas;
    Cadencia paso;  // of its stamp
};

class Marcador {
   public:
    // They come out so many at once, because asking who still needs them costs as much as one of them does.
    static constexpr std::size_t kDeUnaVez = 64;

    Marcador(const Limites& limites, std::function<void(const Juzgada&)> alJuzgar);
    Marcador(const Marcador&) = delete;
    Marcador& operator=(const Marcador&) = delete;
    ~Marcador() = default;

    // In order of stamp; those of one stamp, which are in conflict, one after the other.
    void agregar(const Observacion& observacion);
    // No more samples: what is held back comes out.
    void terminar();

   private:
    struct Detenido {
        Canal canal;
        Millonesimas escala;  // of its values
        Fijo fijo;
        std::optional<Millonesimas> soloConViento;  // above this, at every sample
    };

    void alSaberPaso(const Cadencia& paso);
    void juzgar(Juzgada& juzgada);
    void juzgarRango(Juzgada& juzgada);
    void juzgarSalto(Juzgada& juzgada) const;
    void juzgarFijo(const Juzgada& juzgada);
    void soltar();

    // The limits in the channels' own whole numbers, as far as a value may go; the widest where there is
    // none.
    struct Topes {
        std::array<std::int32_t, kCanales> menor;
        std::array<std::int32_t, kCanales> mayor;
        std::array<std::int32_t, kCanales> salto;
        int intervalo = 0;  // for which rain's stand
    };
    void medirLluvia(int intervalo);

    Limites limites_;
    Topes topes_;
    std::function<void(const Juzgada&)> alJuzgar_;
    Ritmo ritmo_;
    std::vector<Detenido> detenidos_;

    // Held back: those from the front on, of which juzgadas_ have their own marks already.
    Anillo<Juzgada> cola_;
    std::uint64_t primera_ = 0;  // position of the queue's front in the series
    std::size_t juzgadas_ = 0;
    std::size_t soltarCon_ = 0;          // so many of them
    std::optional<Observacion> vecina_;  // the last without a conflict
    bool huecoDesdeVecina_ = false;
};

}  // namespace telvane
