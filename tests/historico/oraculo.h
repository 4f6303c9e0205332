// What an archive of a set of images must hold, told in the plainest way: everything anew from all images,
// whatever that costs.
#pragma once

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "data/registros.h"
#include "historico/imagen.h"
#include "tests/historico/imagen_prueba.h"

namespace telvane {

struct EstadoEsperado {
    std::vector<Fila> filas;
    std::int64_t cuentan = 0;
    std::int64_t conflictos = 0;
    std::int64_t huecos = 0;
};

class Oraculo {
   public:
    using Imagen = std::vector<std::uint8_t>;

    static EstadoEsperado de(const std::set<Imagen>& imagenes) {
        std::map<Instante, std::set<BytesMuestra>> porSello;
        for (const auto& imagen : imagenes)
            for (const auto& r : ranurasDe(imagen)) porSello[r.instante].insert(r.registro);

        EstadoEsperado esperado;
        std::vector<Instante> sellos;
        for (const auto& [sello, registros] : porSello) {
            sellos.push_back(sello);
            if (registros.size() > 1) ++esperado.conflictos;
            for (const auto& registro : registros) {
                const bool cuenta = elegido(imagenes, registros, registro);
                esperado.filas.push_back({sello, registro, cuenta});
                if (cuenta) ++esperado.cuentan;
            }
        }
        for (std::size_t i = 1; i < sellos.size(); ++i) {
            if (sellos[i] - sellos[i - 1] > std::chrono::minutes(intervalo(sellos, i))) ++esperado.huecos;
        }
        return esperado;
    }

    static int intervalo(const std::vector<Instante>& sellos, std::size_t i) {
        std::vector<std::int64_t> pasos;
        for (std::size_t j = i > 10 ? i - 10 : 0; j < std::min(sellos.size() - 1, i + 10); ++j)
            pasos.push_back((sellos[j + 1] - sellos[j]).count());
        if (pasos.empty()) return 60;
        std::sort(pasos.begin(), pasos.end());
        for (const int minutos : {1, 5, 10, 15, 30, 60})
            if (pasos[pasos.size() / 2] <= minutos * 60) return minutos;
        return 60;
    }

   private:
    struct EnRanura {
        std::size_t ranura = 0;
        Instante instante{};
        BytesMuestra registro{};
    };
    static std::vector<EnRanura> ranurasDe(const Imagen& imagen) {
        std::vector<EnRanura> lista;
        recorrerRegistros(imagen, [&](std::size_t ranura, BytesMuestraConst registro) {
            lista.push_back({ranura, instanteDe(registro), copiaDe(registro)});
        });
        return lista;
    }

    static std::set<std::size_t> ranurasCon(const Imagen& imagen, const BytesMuestra& registro) {
        std::set<std::size_t> ranuras;
        for (const auto& r : ranurasDe(imagen))
            if (r.registro == registro) ranuras.insert(r.ranura);
        return ranuras;
    }

    static bool comparten(const std::set<Imagen>& imagenes, const BytesMuestra& una,
                          const BytesMuestra& otra) {
        std::set<std::size_t> deUna;
        std::set<std::size_t> deOtra;
        for (const auto& imagen : imagenes) {
            deUna.merge(ranurasCon(imagen, una));
            deOtra.merge(ranurasCon(imagen, otra));
        }
        return std::any_of(deUna.begin(), deUna.end(), [&](auto r) { return deOtra.contains(r); });
    }

    // A partial image has no vote where a whole one contains it.
    static bool superflua(const std::set<Imagen>& imagenes, const Imagen& parcial) {
        if (parcial.size() == kBytesMemoria) return false;
        const auto suyas = ranurasDe(parcial);
        return std::any_of(imagenes.begin(), imagenes.end(), [&](const Imagen& entera) {
            return entera.size() == kBytesMemoria &&
                   std::all_of(suyas.begin(), suyas.end(), [&](const auto& r) {
                       return std::equal(r.registro.begin(), r.registro.end(),
                                         entera.begin() + static_cast<std::ptrdiff_t>(r.ranura * 32));
                   });
        });
    }

    static std::size_t votos(const std::set<Imagen>& imagenes, const BytesMuestra& registro) {
        return static_cast<std::size_t>(std::count_if(imagenes.begin(), imagenes.end(), [&](const Imagen& i) {
            return !superflua(imagenes, i) && !ranurasCon(i, registro).empty();
        }));
    }

    static bool elegido(const std::set<Imagen>& imagenes, const std::set<BytesMuestra>& registros,
                        const BytesMuestra& registro) {
        if (registros.size() == 1) return true;
        std::set<BytesMuestra> grupo{registro};
        for (bool crece = true; crece;) {
            crece = false;
            for (const auto& otro : registros) {
                const bool unido = std::any_of(grupo.begin(), grupo.end(),
                                               [&](const auto& m) { return comparten(imagenes, m, otro); });
                if (unido && grupo.insert(otro).second) crece = true;
            }
        }
        const auto* mejor = &*grupo.begin();
        for (const auto& otro : grupo)
            if (votos(imagenes, otro) > votos(imagenes, *mejor)) mejor = &otro;
        return *mejor == registro;
    }
};

}  // namespace telvane
