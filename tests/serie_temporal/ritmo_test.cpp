#include "serie_temporal/ritmo.h"

#include <algorithm>
#include <chrono>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace telvane {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

constexpr Instante kInicio{1'542'672'000s};

std::vector<Cadencia> pasosDe(const std::vector<Instante>& instantes) {
    std::vector<Cadencia> pasos;
    Ritmo ritmo([&](const Cadencia& paso) { pasos.push_back(paso); });
    for (const auto instante : instantes) ritmo.agregar(instante);
    ritmo.terminar();
    return pasos;
}

std::vector<Instante> cada(std::chrono::seconds paso, int cuantos, Instante desde = kInicio) {
    std::vector<Instante> instantes;
    for (int i = 0; i < cuantos; ++i) instantes.push_back(desde + i * paso);
    return instantes;
}

std::vector<int> huecosDe(const std::vector<Cadencia>& pasos) {
    std::vector<int> donde;
    for (std::size_t i = 0; i < pasos.size(); ++i)
        if (pasos[i].hueco) donde.push_back(static_cast<int>(i));
    return donde;
}

// The rule, written down as it is said.
std::vector<Cadencia> aLaLetra(const std::vector<Instante>& t) {
    std::vector<Cadencia> pasos;
    const auto n = static_cast<int>(t.size());
    for (int i = 0; i < n; ++i) {
        std::vector<std::int64_t> todos;
        for (int k = std::max(0, i - 10); k < std::min(n - 1, i + 10); ++k)
            todos.push_back((t[static_cast<std::size_t>(k + 1)] - t[static_cast<std::size_t>(k)]).count());
        std::ranges::sort(todos);
        Cadencia paso{.instante = t[static_cast<std::size_t>(i)]};
        if (!todos.empty()) paso.intervalo = intervaloDePaso(std::chrono::seconds(todos[todos.size() / 2]));
        paso.hueco = i > 0 && t[static_cast<std::size_t>(i)] - t[static_cast<std::size_t>(i - 1)] >
                                  std::chrono::minutes(paso.intervalo);
        paso.tramo = std::chrono::minutes(paso.intervalo);
        if (i > 0 && !paso.hueco)
            paso.tramo = t[static_cast<std::size_t>(i)] - t[static_cast<std::size_t>(i - 1)];
        pasos.push_back(paso);
    }
    return pasos;
}

TEST(Ritmo, RoundsUpToAnIntervalOfTheLogger) {
    EXPECT_EQ(intervaloDePaso(1s), 1);
    EXPECT_EQ(intervaloDePaso(60s), 1);
    EXPECT_EQ(intervaloDePaso(61s), 5);
    EXPECT_EQ(intervaloDePaso(300s), 5);
    EXPECT_EQ(intervaloDePaso(301s), 10);
    EXPECT_EQ(intervaloDePaso(600s), 10);
    EXPECT_EQ(intervaloDePaso(601s), 15);
    EXPECT_EQ(intervaloDePaso(901s), 30);
    EXPECT_EQ(intervaloDePaso(1801s), 60);
    EXPECT_EQ(intervaloDePaso(3600s), 60);
    EXPECT_EQ(intervaloDePaso(3601s), 60);
    EXPECT_EQ(intervaloDePaso(24h), 60);
}

TEST(Ritmo, AStepOfTheIntervalIsNoGapAndASecondMoreIsOne) {
    auto instantes = cada(10min, 30);
    for (std::size_t i = 15; i < instantes.size(); ++i) instantes[i] += 1s;
    EXPECT_THAT(huecosDe(pasosDe(cada(10min, 30))), testing::IsEmpty());
    EXPECT_THAT(huecosDe(pasosDe(instantes)), ElementsAre(15));
}

TEST(Ritmo, FollowsASettingThatChanged) {
    auto instantes = cada(10min, 40);
    for (const auto t : cada(60min, 40, instantes.back() + 60min)) instantes.push_back(t);
    const auto pasos = pasosDe(instantes);
    EXPECT_EQ(pasos[20].intervalo, 10);
    EXPECT_EQ(pasos[39].intervalo, 60) << "of ten steps each the greater middle one";
    EXPECT_EQ(pasos[38].intervalo, 10);
    EXPECT_EQ(pasos[39].tramo, 10min) << "what went by since the one before it, whatever the interval";
    EXPECT_EQ(pasos[60].intervalo, 60);
    EXPECT_THAT(huecosDe(pasos), testing::IsEmpty());
}

TEST(Ritmo, GoesOnOverTheYearsEnd) {
    const auto pasos = pasosDe(cada(30min, 40, instante({.anio = 2018, .mes = 12, .dia = 31}, {.hora = 14})));
    EXPECT_THAT(huecosDe(pasos), testing::IsEmpty());
    EXPECT_TRUE(std::ranges::all_of(pasos, [](const Cadencia& p) { return p.intervalo == 30; }));
}

TEST(Ritmo, FewStampsAreJudgedByWhatThereIs) {
    EXPECT_THAT(pasosDe({}), testing::IsEmpty());
    EXPECT_EQ(pasosDe(cada(10min, 1)).at(0).intervalo, 60);
    EXPECT_EQ(pasosDe(cada(10min, 2)).at(0).intervalo, 10);
    EXPECT_THAT(huecosDe(pasosDe({kInicio, kInicio + 3h})), ElementsAre(1));
}

TEST(Ritmo, HoldsBackTenStampsAndNoMore) {
    std::size_t dichos = 0;
    Ritmo ritmo([&](const Cadencia&) { ++dichos; });
    for (int i = 0; i < 100; ++i) ritmo.agregar(kInicio + i * 1min);
    EXPECT_EQ(dichos, 90U);
}

RC_GTEST_PROP(Ritmo, SaysWhatTheRuleSaysForAnyStamps, ()) {
    const auto pasos = *rc::gen::container<std::vector<int>>(
        rc::gen::oneOf(rc::gen::elementOf(std::vector<int>{60, 600, 3600}), rc::gen::inRange(1, 20'000)));
    std::vector<Instante> instantes{kInicio};
    for (const auto paso : pasos) instantes.push_back(instantes.back() + std::chrono::seconds(paso));
    RC_ASSERT(pasosDe(instantes) == aLaLetra(instantes));
}

}  // namespace
}  // namespace telvane
