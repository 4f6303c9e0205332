#include "historico/recorrido_filas.h"

#include <algorithm>
#include <set>
#include <vector>

#include "historico/imagenes.h"

namespace telvane {

namespace {

constexpr std::chrono::seconds kUnPaso{1};

struct Candidata {
    FichaImagen ficha;
    bool sola = false;  // opened without another one
    bool descartada = false;
};

// An image that is to tell what lies between two moments, both included.
struct Tramo {
    Candidata* candidata;
    Instante desde;
    Instante hasta;
    // Samples there, where they have been counted.
    std::int64_t muestras = 0;
};

class Recorrido {
   public:
    Recorrido(Almacen& almacen, const EstacionGuardada& estacion, const AlRecorrer& alRecorrer)
        : almacen_(almacen), estacion_(estacion), imagenes_(almacen, estacion.id), alRecorrer_(alRecorrer) {
        const auto lista = almacen.imagenesSolas(estacion.id);
        const std::set<Huella> solas(lista.begin(), lista.end());
        for (auto& ficha : almacen.fichas(estacion.id)) {
            const bool sola = solas.contains(ficha.huella);
            if (ficha.desde) candidatas_.push_back({std::move(ficha), sola});
        }
    }

    void correr(Instante desde, Instante hasta) {
        auto plan = planear();
        if (sonTodas(plan)) {
            for (const auto& tramo : plan) {
                const Tramo parte{tramo.candidata, std::max(desde, tramo.desde),
                                  std::min(hasta, tramo.hasta)};
                if (parte.desde > parte.hasta) continue;
                const bool entero = parte.desde == tramo.desde && parte.hasta == tramo.hasta;
                if (!(entero ? contarEntero(tramo) : contar(parte))) leer(parte.desde, parte.hasta);
            }
        } else {
            while (desde <= hasta) desde = avanzar(desde, hasta) + kUnPaso;
        }
    }

   private:
    // The images one after the other, as if each held all that lies between the one before it and its own
    // end.
    std::vector<Tramo> planear() {
        std::vector<Tramo> plan;
        for (auto desde = kPrimerMomento;;) {
            for (auto& c : candidatas_) c.descartada = *c.ficha.hasta < desde;
            auto* siguiente = elegir(desde);
            if (siguiente == nullptr) return plan;
            plan.push_back({siguiente, desde, *siguiente->ficha.hasta});
            desde = plan.back().hasta + kUnPaso;
        }
    }

    // Whether they are, together, as many samples as there are. Then no row needs to be looked at.
    bool sonTodas(std::vector<Tramo>& plan) {
        if (estacion_.resumen.conflictos > 0) return false;
        std::int64_t muestras = 0;
        for (auto& tramo : plan) {
            const auto& ficha = tramo.candidata->ficha;
            tramo.muestras = *ficha.desde >= tramo.desde ? ficha.muestras : muestrasEn(tramo);
            muestras += tramo.muestras;
        }
        return muestras == estacion_.resumen.muestras;
    }

    // Tells the rows from a moment on; gives the moment up to which they are told.
    Instante avanzar(Instante desde, Instante hasta) {
        constexpr int kIntentos = 3;
        Instante fin = hasta;
        for (auto& c : candidatas_) c.descartada = *c.ficha.hasta < desde;
        for (int i = 0; i < kIntentos; ++i) {
            auto* candidata = elegir(desde);
            if (candidata == nullptr) break;
            const Tramo tramo{candidata, desde, std::min(*candidata->ficha.hasta, hasta)};
            if (contar(tramo)) return tramo.hasta;
            candidata->descartada = true;
            fin = std::min(fin, tramo.hasta);
        }
        leer(desde, fin);
        return fin;
    }

    // The image that leads furthest, those first that reach back to what is told; else the one that begins
    // next.
    Candidata* elegir(Instante desde) {
        Candidata* mejor = nullptr;
        const auto mejorQue = [&](const Candidata& a, const Candidata& b) {
            const bool una = *a.ficha.desde <= desde;
            const bool otra = *b.ficha.desde <= desde;
            if (una != otra) return una;
            if (!una) return *a.ficha.desde < *b.ficha.desde;
            return a.sola != b.sola ? a.sola : *a.ficha.hasta > *b.ficha.hasta;
        };
        for (auto& c : candidatas_) {
            if (!c.descartada && (mejor == nullptr || mejorQue(c, *mejor))) mejor = &c;
        }
        return mejor;
    }

    // How many samples the image holds of these moments; nothing where one stamp has two, or where it cannot
    // be read.
    std::int64_t muestrasEn(const Tramo& tramo) {
        const auto* bytes = imagenes_.siSeLee(tramo.candidata->ficha.huella);
        if (bytes == nullptr) return 0;
        const auto filas = filasQueNoEstanEn(*bytes, {});
        const auto primera = std::ranges::lower_bound(filas, tramo.desde, {}, &Fila::instante);
        const auto ultima = std::ranges::upper_bound(filas, tramo.hasta, {}, &Fila::instante);
        const auto mismoSello = [](const Fila& a, const Fila& b) { return a.instante == b.instante; };
        return std::adjacent_find(primera, ultima, mismoSello) == ultima ? ultima - primera : 0;
    }

    // Tells the image if it holds all that there is; whether it does.
    bool contar(Tramo tramo) {
        tramo.muestras = muestrasEn(tramo);
        return tramo.muestras > 0 &&
               tramo.muestras == almacen_.contarFilas(estacion_.id, tramo.desde, tramo.hasta) &&
               contarEntero(tramo);
    }

    // The same of samples that have been counted. Another image's would not be as many there.
    bool contarEntero(const Tramo& tramo) {
        const auto imagen = imagenes_.compartida(tramo.candidata->ficha.huella);
        if (!imagen) return false;
        const TramoImagen suyo(imagen, tramo.desde, tramo.hasta);
        if (suyo.cuantas() != static_cast<std::size_t>(tramo.muestras)) return false;
        alRecorrer_.tramo(suyo);
        return true;
    }

    void leer(Instante desde, Instante hasta) {
        almacen_.filas(estacion_.id, desde, hasta, alRecorrer_.fila);
    }

    Almacen& almacen_;
    const EstacionGuardada& estacion_;
    Imagenes imagenes_;
    const AlRecorrer& alRecorrer_;
    std::vector<Candidata> candidatas_;
};

}  // namespace

void recorrerFilas(Almacen& almacen, const EstacionGuardada& estacion, Instante desde, Instante hasta,
                   const AlRecorrer& alRecorrer) {
    Recorrido(almacen, estacion, alRecorrer).correr(desde, hasta);
}

bool convienenImagenes(const EstacionGuardada& estacion, Instante desde, Instante hasta) {
    constexpr double kBastantes = 20'000;
    const auto& r = estacion.resumen;
    if (!r.desde) return false;
    using Segundos = std::chrono::duration<double>;
    const Segundos todo = *r.hasta - *r.desde + kUnPaso;
    const Segundos parte = std::min(hasta, *r.hasta) - std::max(desde, *r.desde) + kUnPaso;
    return static_cast<double>(r.muestras) * (parte / todo) > kBastantes;
}

}  // namespace telvane
