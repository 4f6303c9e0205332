#include "calidad/fijo.h"

#include <algorithm>
#include <random>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace telvane {
namespace {

using namespace std::chrono_literals;

struct Punto {
    int paso = 1;  // minutes after the one before
    int valor = 0;
    bool corte = false;  // before it
};

constexpr Instante kOrigen{0s};

std::vector<bool> hallados(Fijo fijo, const std::vector<Punto>& puntos, bool comprobarAbierta = true) {
    std::vector<bool> fijos(puntos.size());
    Instante momento = kOrigen;
    for (std::size_t i = 0; i < puntos.size(); ++i) {
        const auto antes = fijo.abierta().value_or(i);
        if (puntos[i].corte) fijo.cortar();
        momento += std::chrono::minutes(puntos[i].paso);
        const auto h = fijo.agregar(i, momento, puntos[i].valor);
        if (!h) continue;
        // What was told to be known does not change any more.
        for (auto p = h->desde; p <= h->hasta; ++p) {
            if (comprobarAbierta && !fijos[p] && p < antes) ADD_FAILURE() << p << " was known at " << i;
            fijos[p] = true;
        }
    }
    return fijos;
}

// Every stretch, looked at.
std::vector<bool> aLaLetra(const LimiteFijo& limite, bool hastaElla, bool media,
                           const std::vector<Punto>& puntos) {
    std::vector<bool> fijos(puntos.size());
    for (std::size_t a = 0; a < puntos.size(); ++a) {
        int menor = puntos[a].valor;
        int mayor = menor;
        std::int64_t suma = 0;
        std::chrono::minutes dura{0};
        for (std::size_t b = a; b < puntos.size(); ++b) {
            if (b > a && puntos[b].corte) break;
            if (b > a) dura += std::chrono::minutes(puntos[b].paso);
            menor = std::min(menor, puntos[b].valor);
            mayor = std::max(mayor, puntos[b].valor);
            suma += puntos[b].valor - limite.viento;
            const bool quieto =
                hastaElla ? mayor - menor <= limite.amplitud : mayor - menor < limite.amplitud;
            if (dura >= limite.dura && quieto && (!media || suma > 0)) {
                std::fill(fijos.begin() + static_cast<std::ptrdiff_t>(a),
                          fijos.begin() + static_cast<std::ptrdiff_t>(b) + 1, true);
            }
        }
    }
    return fijos;
}

std::vector<Punto> puntosAlAzar(int valores) {
    return *rc::gen::container<std::vector<Punto>>(rc::gen::build<Punto>(
        rc::gen::set(&Punto::paso, rc::gen::inRange(1, 4)),
        rc::gen::set(&Punto::valor, rc::gen::inRange(0, valores)),
        rc::gen::set(&Punto::corte, rc::gen::map(rc::gen::inRange(0, 40), [](int n) { return n == 0; }))));
}

RC_GTEST_PROP(Fijo, FindsWhatLookingAtEveryStretchFinds, ()) {
    const auto puntos = puntosAlAzar(*rc::gen::inRange(1, 8));
    const LimiteFijo limite{.dura = std::chrono::minutes(*rc::gen::inRange(1, 12)),
                            .amplitud = *rc::gen::inRange(0, 4)};
    const bool hastaElla = *rc::gen::arbitrary<bool>();
    const auto amplitud = hastaElla ? Fijo::Amplitud::hastaElla : Fijo::Amplitud::menor;
    RC_ASSERT(hallados(Fijo(limite, amplitud, Fijo::Media::indistinta), puntos) ==
              aLaLetra(limite, hastaElla, false, puntos));
}

RC_GTEST_PROP(Fijo, FindsTheStretchesWhoseMeanIsAboveTheLimitToo, ()) {
    const auto puntos = puntosAlAzar(*rc::gen::inRange(2, 9));
    const LimiteFijo limite{.dura = std::chrono::minutes(*rc::gen::inRange(1, 12)),
                            .amplitud = *rc::gen::inRange(1, 6),
                            .viento = *rc::gen::inRange(0, 7)};
    RC_ASSERT(hallados(Fijo(limite, Fijo::Amplitud::menor, Fijo::Media::mayor), puntos) ==
              aLaLetra(limite, false, true, puntos));
}

// Weather as it stands still: most values are the one before or lie beside it, and limits lie among them.
class Azar {
   public:
    int hasta(int mayor) { return std::uniform_int_distribution(0, mayor)(numeros_); }
    std::vector<Punto> puntos() {
        std::vector<Punto> todos(static_cast<std::size_t>(hasta(60)));
        const int mayor = 1 + hasta(7);
        const int deCada = 1 + hasta(5);
        int valor = hasta(mayor);
        for (auto& punto : todos) {
            if (hasta(deCada) == 0) valor = std::clamp(valor + hasta(2) - 1, 0, mayor);
            if (hasta(30) == 0) valor = hasta(mayor);
            punto = {.paso = 1 + hasta(2), .valor = valor, .corte = hasta(40) == 0};
        }
        return todos;
    }

   private:
    std::mt19937 numeros_{1};
};

TEST(Fijo, FindsInThousandsOfStillSeriesWhatLookingAtEveryStretchFinds) {
    constexpr int kSeries = 6'000;
    Azar azar;
    for (int serie = 0; serie < kSeries; ++serie) {
        const auto puntos = azar.puntos();
        const LimiteFijo limite{.dura = std::chrono::minutes(1 + azar.hasta(14)),
                                .amplitud = azar.hasta(4),
                                .viento = azar.hasta(6)};
        const bool hastaElla = azar.hasta(1) == 0;
        const auto amplitud = hastaElla ? Fijo::Amplitud::hastaElla : Fijo::Amplitud::menor;
        ASSERT_EQ(hallados(Fijo(limite, amplitud, Fijo::Media::indistinta), puntos),
                  aLaLetra(limite, hastaElla, false, puntos))
            << serie;
        ASSERT_EQ(hallados(Fijo(limite, Fijo::Amplitud::menor, Fijo::Media::mayor), puntos),
                  aLaLetra(limite, false, true, puntos))
            << serie;
    }
}

TEST(Fijo, AStretchMustLastTheWholeTime) {
    const LimiteFijo limite{.dura = 60min, .amplitud = 5};
    const auto con = [&](int ultimo) {
        return hallados(Fijo(limite, Fijo::Amplitud::menor, Fijo::Media::indistinta),
                        {{1, 7}, {30, 7}, {ultimo, 7}});
    };
    EXPECT_EQ(con(29), (std::vector<bool>{false, false, false}));
    EXPECT_EQ(con(30), (std::vector<bool>{true, true, true}));
}

TEST(Fijo, WhatStandsStillForYearsIsKeptAsOneValue) {
    const LimiteFijo limite{.dura = 12h, .amplitud = 5, .viento = 3};
    for (const auto media : {Fijo::Media::indistinta, Fijo::Media::mayor}) {
        Fijo fijo(limite, Fijo::Amplitud::menor, media);
        std::uint64_t marcadas = 0;
        for (std::uint64_t i = 0; i < 200'000; ++i) {
            if (const auto h = fijo.agregar(i, kOrigen + i * 10min, 50)) marcadas += h->hasta - h->desde + 1;
            ASSERT_LE(i - fijo.abierta().value_or(i), 72U);
        }
        EXPECT_EQ(marcadas, 200'000U);
    }
}

}  // namespace
}  // namespace telvane
