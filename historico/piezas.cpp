#include "historico/piezas.h"

#include <algorithm>
#include <array>
#include <map>
#include <span>
#include <utility>

#include "historico/asimilacion.h"

namespace telvane {

namespace {

class Emparejador {
   public:
    Emparejador(Contenidos& contenidos, const std::vector<Almacen::FichaGuardada>& fichas,
                const std::set<Huella>& deOtros)
        : contenidos_(contenidos),
          fichas_(fichas),
          deOtros_(deOtros),
          deContenido_(contenidos.todos().size()),
          usadas_(fichas.size()) {}

    std::vector<Pieza> emparejar() {
        using Sitio = std::pair<IdEstacion, Huella>;
        const auto sitioDe = [](const Contenido& c) { return Sitio(c.guardado.estacion, nombreDe(c)); };
        const auto sitio = [](const Almacen::FichaGuardada& f) { return Sitio(f.estacion, f.ficha.huella); };
        porClave<Sitio>(true, sitioDe, sitio);
        porClave<Huella>(true, nombreDe, [](const Almacen::FichaGuardada& f) { return f.ficha.huella; });
        porLoQueDicen(0);
        porClave<Sitio>(false, sitioDe, sitio);
        // Two nights of one memory differ in more.
        constexpr std::size_t kCambiadas = 2;
        for (std::size_t cuantas = 1; cuantas <= kCambiadas; ++cuantas) porLoQueDicen(cuantas);
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

    // What was noted of an image under a wrong name is known by what it says, but for so many of its values.
    void porLoQueDicen(std::size_t cambiadas) {
        for (std::size_t i = 0; i < deContenido_.size(); ++i) {
            const auto& contenido = contenidos_.todos()[i];
            if (deContenido_[i] || !contenido.es) continue;
            std::optional<FichaImagen> dicha;
            for (std::size_t j = 0; j < fichas_.size() && !deContenido_[i]; ++j) {
                if (usadas_[j] || (cambiadas > 0 && !esDeNadie(fichas_[j].ficha.huella))) continue;
                if (!dicha)
                    dicha = ImagenNueva(contenidos_.bytes(*contenido.es), *contenido.es, {}, {}).ficha;
                const Almacen::FichaGuardada debida{.estacion = contenido.guardado.estacion, .ficha = *dicha};
                if (valoresDistintos(debida, fichas_[j]) == cambiadas) unir(i, j);
            }
        }
    }
    // Of an image that was there something else would tell as well.
    bool esDeNadie(const Huella& huella) const {
        return !contenidos_.seLee(huella) && !deOtros_.contains(huella);
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
    const std::set<Huella>& deOtros_;
    std::vector<std::optional<std::size_t>> deContenido_;
    std::vector<bool> usadas_;
};

}  // namespace

std::size_t valoresDistintos(const Almacen::FichaGuardada& una, const Almacen::FichaGuardada& otra) {
    const auto& a = una.ficha;
    const auto& b = otra.ficha;
    const std::array lasDos = {una.estacion != otra.estacion,
                               a.bytes != b.bytes,
                               a.reloj != b.reloj,
                               a.desde != b.desde,
                               a.hasta != b.hasta,
                               a.muestras != b.muestras,
                               a.retrocesos != b.retrocesos};
    return static_cast<std::size_t>(std::ranges::count(lasDos, true));
}

std::vector<Pieza> piezasDe(Contenidos& contenidos, const std::vector<Almacen::FichaGuardada>& fichas,
                            const std::set<Huella>& deOtros) {
    return Emparejador(contenidos, fichas, deOtros).emparejar();
}

}  // namespace telvane
