#include "historico/piezas.h"

#include <map>
#include <span>
#include <tuple>
#include <utility>

#include "historico/asimilacion.h"

namespace telvane {

namespace {

class Emparejador {
   public:
    Emparejador(Contenidos& contenidos, const std::vector<Almacen::FichaGuardada>& fichas)
        : contenidos_(contenidos),
          fichas_(fichas),
          deContenido_(contenidos.todos().size()),
          usadas_(fichas.size()) {}

    std::vector<Pieza> emparejar() {
        using Sitio = std::pair<IdEstacion, Huella>;
        const auto sitioDe = [](const Contenido& c) { return Sitio(c.guardado.estacion, nombreDe(c)); };
        const auto sitio = [](const Almacen::FichaGuardada& f) { return Sitio(f.estacion, f.ficha.huella); };
        porClave<Sitio>(true, sitioDe, sitio);
        porClave<Huella>(true, nombreDe, [](const Almacen::FichaGuardada& f) { return f.ficha.huella; });
        porLoQueDicen();
        porClave<Sitio>(false, sitioDe, sitio);
        return juntar();
    }

   private:
    static Huella nombreDe(const Contenido& c) { return c.es.value_or(c.guardado.huella); }

    template <typename Clave>
    void porClave(bool losQueSeLeen, const std::function<Clave(const Contenido&)>& delContenido,
                  const std::function<Clave(const Almacen::FichaGuardada&)>& deLaFicha) {
        std::multimap<Clave, std::size_t> libres;
        for (std::size_t i = 0; i < fichas_.size(); ++i) {
            if (!usadas_[i]) libres.emplace(deLaFicha(fichas_[i]), i);
        }
        for (std::size_t i = 0; i < deContenido_.size(); ++i) {
            const auto& contenido = contenidos_.todos()[i];
            if (deContenido_[i] || contenido.es.has_value() != losQueSeLeen) continue;
            const auto suya = libres.find(delContenido(contenido));
            if (suya == libres.end()) continue;
            unir(i, suya->second);
            libres.erase(suya);
        }
    }

    // What was noted of an image under a wrong name is known by what it says.
    void porLoQueDicen() {
        for (std::size_t i = 0; i < deContenido_.size(); ++i) {
            const auto& contenido = contenidos_.todos()[i];
            if (deContenido_[i] || !contenido.es) continue;
            std::optional<FichaImagen> dicha;
            for (std::size_t j = 0; j < fichas_.size() && !deContenido_[i]; ++j) {
                if (usadas_[j] || fichas_[j].estacion != contenido.guardado.estacion) continue;
                if (!dicha)
                    dicha = ImagenNueva(contenidos_.bytes(*contenido.es), *contenido.es, {}, {}).ficha;
                if (loQueDice(*dicha) == loQueDice(fichas_[j].ficha)) unir(i, j);
            }
        }
    }
    using Dicho = std::tuple<std::size_t, std::optional<Instante>, std::optional<Instante>,
                             std::optional<Instante>, std::int64_t, std::int64_t>;
    static Dicho loQueDice(const FichaImagen& f) {
        return {f.bytes, f.reloj, f.desde, f.hasta, f.muestras, f.retrocesos};
    }

    void unir(std::size_t contenido, std::size_t ficha) {
        deContenido_[contenido] = ficha;
        usadas_[ficha] = true;
    }

    std::vector<Pieza> juntar() const {
        std::vector<Pieza> piezas;
        for (std::size_t i = 0; i < deContenido_.size(); ++i) {
            const auto& contenido = contenidos_.todos()[i];
            piezas.push_back({.huella = nombreDe(contenido),
                              .estacion = contenido.guardado.estacion,
                              .contenido = i,
                              .ficha = deContenido_[i]});
        }
        for (std::size_t i = 0; i < fichas_.size(); ++i) {
            if (usadas_[i]) continue;
            piezas.push_back({.huella = fichas_[i].ficha.huella,
                              .estacion = fichas_[i].estacion,
                              .contenido = {},
                              .ficha = i});
        }
        // Another station may have what this one has lost.
        for (auto& pieza : piezas) {
            pieza.seLee = contenidos_.seLee(pieza.huella);
            if (pieza.seLee) pieza.serie = contenidos_.de(pieza.huella).serie;
        }
        return piezas;
    }

    Contenidos& contenidos_;
    const std::vector<Almacen::FichaGuardada>& fichas_;
    std::vector<std::optional<std::size_t>> deContenido_;
    std::vector<bool> usadas_;
};

}  // namespace

std::vector<Pieza> piezasDe(Contenidos& contenidos, const std::vector<Almacen::FichaGuardada>& fichas) {
    return Emparejador(contenidos, fichas).emparejar();
}

}  // namespace telvane
