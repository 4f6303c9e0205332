// The marks of whole series, held to the rules as they are told: every stretch is looked at, every limit
// compared in millionths.
#include <algorithm>
#include <array>
#include <cstdlib>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "calidad/marcador.h"
#include "data/conversiones.h"

namespace telvane {
namespace {

using Serie = std::vector<Observacion>;

constexpr std::size_t en(Canal canal) {
    return static_cast<std::size_t>(canal);
}

class AlPieDeLaLetra {
   public:
    AlPieDeLaLetra(const Serie& serie, const Limites& limites)
        : serie_(serie), limites_(limites), marcas_(serie.size()) {
        for (const auto& o : serie) {
            if (sellos_.empty() || sellos_.back() != o.instante) sellos_.push_back(o.instante);
            suSello_.push_back(sellos_.size() - 1);
        }
        for (std::size_t i = 0; i < sellos_.size(); ++i) {
            intervalos_.push_back(medirIntervalo(static_cast<std::ptrdiff_t>(i)));
            huecos_.push_back(i > 0 && sellos_[i] - sellos_[i - 1] > std::chrono::minutes(intervalos_[i]));
        }
        for (std::size_t i = 0; i < serie.size(); ++i) {
            ponerRango(i);
            if (serie[i].conflicto) marcas_[i].ponerConflicto();
            if (serie[i].conflicto) continue;
            if (huecos_[suSello_[i]]) marcas_[i].ponerHueco();
            if (!vecinas_.empty()) ponerSalto(vecinas_.back(), i);
            vecinas_.push_back(i);
        }
        for (std::size_t canal = 0; canal < kCanales; ++canal)
            if (limites.fijo[canal]) ponerFijo(static_cast<Canal>(canal), *limites.fijo[canal]);
    }
    const std::vector<Marcas>& marcas() const { return marcas_; }

    int intervalo(std::size_t cual) const { return intervalos_[suSello_[cual]]; }

   private:
    int medirIntervalo(std::ptrdiff_t i) const {
        std::vector<std::chrono::seconds> pasos;
        for (auto k = std::max<std::ptrdiff_t>(i - 10, 0); k < std::min(std::ssize(sellos_) - 1, i + 10); ++k)
            pasos.push_back(sellos_[static_cast<std::size_t>(k + 1)] - sellos_[static_cast<std::size_t>(k)]);
        std::ranges::sort(pasos);
        for (const int minutos : {1, 5, 10, 15, 30})
            if (!pasos.empty() && pasos[pasos.size() / 2] <= std::chrono::minutes(minutos)) return minutos;
        return 60;
    }
    Millonesimas valor(std::size_t cual, Canal canal) const {
        return enMillonesimas(valoresDe(serie_[cual].medidas)[en(canal)], canal);
    }

    void ponerRango(std::size_t i) {
        for (std::size_t c = 0; c < kCanales; ++c) {
            const auto canal = static_cast<Canal>(c);
            const bool llueve = canal == Canal::lluvia;
            const auto v = valor(i, canal) * (llueve ? 15 : 1);
            const auto parte = llueve ? intervalo(i) : 1;
            const auto& rango = limites_.rango[c];
            if (rango && (v < rango->desde * parte || v > rango->hasta * parte))
                marcas_[i].poner(canal, Marca::rango);
        }
        for (const int crudo : {0, 1023, 65535}) {
            if (serie_[i].medidas.temperatura == conversiones::temperatura(crudo))
                marcas_[i].poner(Canal::temperatura, Marca::rango);
            if (serie_[i].medidas.presion == conversiones::presion(crudo))
                marcas_[i].poner(Canal::presion, Marca::rango);
        }
    }

    void ponerSalto(std::size_t antes, std::size_t i) {
        if (serie_[i].instante - serie_[antes].instante > std::chrono::minutes(60)) return;
        for (std::size_t c = 0; c < kCanales; ++c) {
            const auto canal = static_cast<Canal>(c);
            if (limites_.salto[c] && std::abs(valor(i, canal) - valor(antes, canal)) > *limites_.salto[c])
                marcas_[i].poner(canal, Marca::salto);
        }
    }

    bool sopla(std::size_t cual, const LimiteFijo& limite) const {
        return valor(cual, Canal::velViento) > limite.viento;
    }
    // Whether a stretch may go on from one neighbour to the next.
    bool sigue(std::size_t antes, std::size_t despues) const {
        for (auto i = suSello_[antes] + 1; i <= suSello_[despues]; ++i)
            if (huecos_[i]) return false;
        return true;
    }

    void ponerFijo(Canal canal, const LimiteFijo& limite) {
        const bool veleta = canal == Canal::dirViento;
        for (std::size_t a = 0; a < vecinas_.size(); ++a) {
            auto menor = valor(vecinas_[a], canal);
            auto mayor = menor;
            Millonesimas suma = 0;
            for (auto b = a; b < vecinas_.size(); ++b) {
                const auto cual = vecinas_[b];
                if (b > a && !sigue(vecinas_[b - 1], cual)) break;
                if (veleta && !sopla(cual, limite)) break;
                menor = std::min(menor, valor(cual, canal));
                mayor = std::max(mayor, valor(cual, canal));
                suma += valor(cual, canal) - limite.viento;
                const bool quieto =
                    veleta ? mayor - menor <= limite.amplitud : mayor - menor < limite.amplitud;
                const bool dura = serie_[cual].instante - serie_[vecinas_[a]].instante >= limite.dura;
                if (!quieto || !dura || (canal == Canal::velViento && suma <= 0)) continue;
                for (auto k = a; k <= b; ++k) marcas_[vecinas_[k]].poner(canal, Marca::fijo);
            }
        }
    }

    const Serie& serie_;
    const Limites& limites_;
    std::vector<Instante> sellos_;
    std::vector<int> intervalos_;  // of each stamp
    std::vector<bool> huecos_;
    std::vector<std::size_t> suSello_;  // of each sample
    std::vector<std::size_t> vecinas_;  // those without a conflict
    std::vector<Marcas> marcas_;
};

class SerieAlAzar {
   public:
    explicit SerieAlAzar(unsigned semilla) : numeros_(semilla) {}
    int hasta(int mayor) { return std::uniform_int_distribution(0, mayor)(numeros_); }
    bool unaDe(int cuantas) { return hasta(cuantas - 1) == 0; }

    // Limits that lie among the values, finer than they are told now and then.
    Limites limites() {
        Limites l;
        const auto millonesimas = [&](int desde, int cuantas, Canal canal) {
            const auto entero = enMillonesimas(desde + hasta(cuantas), canal);
            return unaDe(2) ? entero : entero + hasta(9'999) - 5'000;
        };
        for (std::size_t c = 0; c < kCanales; ++c) {
            const auto canal = static_cast<Canal>(c);
            if (unaDe(2)) l.rango[c] = {millonesimas(-12, 16, canal), millonesimas(-4, 16, canal)};
            if (unaDe(2)) l.salto[c] = millonesimas(1, 6, canal);
            if (unaDe(2))
                l.fijo[c] = {.dura = std::chrono::minutes(10 + 5 * hasta(30)),
                             .amplitud = millonesimas(0, 4, canal),
                             .viento = millonesimas(-1, 4, Canal::velViento)};
        }
        return l;
    }

    Serie serie() {
        static constexpr std::array kPasos = {1, 5, 10, 15, 30, 60, 61};
        Serie todas;
        Medidas m;
        auto momento = instante({.anio = 2018, .mes = 12, .dia = 31}, {.hora = 12});
        int paso = kPasos[static_cast<std::size_t>(hasta(6))];
        for (int i = hasta(110); i > 0; --i) {
            if (unaDe(30)) paso = kPasos[static_cast<std::size_t>(hasta(6))];
            momento += std::chrono::minutes(paso * (unaDe(25) ? 2 : 1)) + std::chrono::seconds(unaDe(30));
            mover(m);
            const bool conflicto = unaDe(20);
            for (int repetida = conflicto ? hasta(2) : 0; repetida >= 0; --repetida) {
                todas.push_back({.instante = momento, .medidas = m, .conflicto = conflicto});
                if (conflicto) mover(m);
            }
        }
        return todas;
    }

   private:
    void mover(Medidas& m) {
        for (auto* campo : {&m.humedad, &m.temperatura, &m.dirViento, &m.velViento, &m.radSolar, &m.presion,
                            &m.lluvia, &m.evaporacion}) {
            if (unaDe(4)) *campo += hasta(2) - 1;
            if (unaDe(60)) *campo = hasta(24) - 12;
        }
        static constexpr std::array kTopes = {0, 1, 1022, 1023, 65535};
        if (unaDe(80)) m.temperatura = conversiones::temperatura(kTopes[static_cast<std::size_t>(hasta(4))]);
        if (unaDe(80)) m.presion = conversiones::presion(kTopes[static_cast<std::size_t>(hasta(4))]);
    }

    std::mt19937 numeros_;
};

TEST(Marcador, MarksInThousandsOfSeriesWhatTheRulesSayWordForWord) {
    constexpr unsigned kSeries = 1'500;
    for (unsigned cual = 0; cual < kSeries; ++cual) {
        SerieAlAzar azar(cual);
        const auto limites = azar.limites();
        const auto serie = azar.serie();
        const AlPieDeLaLetra debe(serie, limites);
        std::size_t dichas = 0;
        Marcador marcador(limites, [&](const Juzgada& j) {
            ASSERT_LT(dichas, serie.size());
            ASSERT_EQ(j.observacion.instante, serie[dichas].instante);
            ASSERT_EQ(j.marcas.texto(), debe.marcas()[dichas].texto()) << cual << " " << dichas;
            ASSERT_EQ(j.paso.intervalo, debe.intervalo(dichas)) << cual << " " << dichas;
            ++dichas;
        });
        for (const auto& o : serie) marcador.agregar(o);
        marcador.terminar();
        ASSERT_EQ(dichas, serie.size()) << cual;
        ASSERT_FALSE(testing::Test::HasFatalFailure()) << cual;
    }
}

// What is at the end of one series says nothing of the next.
TEST(Marcador, BeginsAnewAfterTheEnd) {
    SerieAlAzar azar(7);
    auto limites = azar.limites();
    for (std::size_t c = 0; c < kCanales; ++c) limites.salto[c] = 0;
    Medidas otras;
    otras.temperatura = 5;
    std::vector<std::string> textos;
    Marcador marcador(limites, [&](const Juzgada& j) { textos.push_back(j.marcas.texto()); });
    for (const auto& medidas : {Medidas(), otras}) {
        marcador.agregar({.instante = Instante{std::chrono::hours(1)}, .medidas = medidas});
        marcador.terminar();
    }
    ASSERT_EQ(textos.size(), 2U);
    EXPECT_EQ(textos[1].find("salto"), std::string::npos) << textos[1];
}

}  // namespace
}  // namespace telvane
