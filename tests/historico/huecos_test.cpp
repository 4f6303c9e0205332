// Gaps as they are counted while images come, against counting all of them anew.
#include "historico/huecos.h"

#include <algorithm>
#include <iterator>
#include <random>
#include <set>

#include "historico/almacen.h"
#include "tests/historico/oraculo.h"

namespace telvane {
namespace {

using Sellos = std::vector<Instante>;

std::int64_t deNuevo(const Sellos& todos) {
    std::int64_t cuantos = 0;
    for (std::size_t i = 1; i < todos.size(); ++i)
        cuantos += todos[i] - todos[i - 1] > std::chrono::minutes(Oraculo::intervalo(todos, i));
    return cuantos;
}

class SellosAlAzar {
   public:
    int hasta(int mayor) { return std::uniform_int_distribution(0, mayor)(numeros_); }
    // An interval for a while, then another one, samples lost one by one, every second one, or many.
    Sellos sellos() {
        static constexpr std::array kPasos = {1, 5, 10, 15, 30, 60, 61, 90};
        Sellos todos;
        auto momento = kInicio;
        const int cuantos = hasta(120);
        int paso = kPasos[static_cast<std::size_t>(hasta(7))];
        int deCada = 1;
        while (std::ssize(todos) < cuantos) {
            if (hasta(25) == 0) paso = kPasos[static_cast<std::size_t>(hasta(7))];
            if (hasta(25) == 0) deCada = 1 + hasta(2);
            momento += std::chrono::minutes(paso * deCada * (hasta(20) == 0 ? 1 + hasta(30) : 1));
            if (hasta(15) == 0) momento += std::chrono::seconds(hasta(2) - 1);
            todos.push_back(momento);
        }
        return todos;
    }
    // Some of them, maybe only of a stretch.
    Sellos algunos(const Sellos& todos) {
        Sellos unos;
        const auto n = static_cast<int>(todos.size());
        const int desde = hasta(n);
        const int fin = hasta(2) == 0 ? n : desde + hasta(n - desde);
        const int deCada = hasta(3);
        for (int i = desde; i < fin; ++i)
            if (hasta(deCada) == 0) unos.push_back(todos[static_cast<std::size_t>(i)]);
        return unos;
    }

   private:
    std::mt19937 numeros_{1};
};

// As a store gives them.
SellosAlrededor alrededor(const Sellos& hay, const Sellos& nuevos) {
    const auto desde = std::ranges::lower_bound(hay, nuevos.front());
    const auto hasta = std::ranges::upper_bound(hay, nuevos.back());
    constexpr auto kCuantos = static_cast<std::ptrdiff_t>(kSellosAlrededor);
    return {.antes = {desde - std::min(desde - hay.begin(), kCuantos), desde},
            .medio = {desde, hasta},
            .despues = {hasta, hasta + std::min(hay.end() - hasta, kCuantos)}};
}

TEST(Huecos, GrowAsCountingAllOfThemAnewSays) {
    constexpr int kSeries = 4'000;
    SellosAlAzar azar;
    for (int serie = 0; serie < kSeries; ++serie) {
        const auto todos = azar.sellos();
        ASSERT_EQ(contarHuecos(todos, kPrimerMomento, kUltimoMomento), deNuevo(todos)) << serie;
        const auto nuevos = azar.algunos(todos);
        if (nuevos.empty()) continue;
        Sellos hay;
        std::ranges::set_difference(todos, nuevos, std::back_inserter(hay));
        ASSERT_EQ(huecosDeMas(alrededor(hay, nuevos), nuevos), deNuevo(todos) - deNuevo(hay)) << serie;
    }
}

// The 11th step of the new kind is the greater middle one of ten and ten.
TEST(Huecos, ARegularLossOfEverySecondSampleForLongerThanTenIsAnotherInterval) {
    const auto con = [](int perdidas) {
        Sellos sellos;
        auto momento = kInicio;
        for (int i = 0; i < 60; ++i) {
            momento += std::chrono::minutes(i >= 20 && i < 20 + perdidas ? 20 : 10);
            sellos.push_back(momento);
        }
        return contarHuecos(sellos, kPrimerMomento, kUltimoMomento);
    };
    EXPECT_EQ(con(5), 5);
    EXPECT_EQ(con(9), 9);
    EXPECT_LT(con(11), 11);
    EXPECT_EQ(con(30), 0);
}

}  // namespace
}  // namespace telvane
