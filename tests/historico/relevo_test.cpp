#include "historico/relevo.h"

#include <numeric>
#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>

namespace telvane {
namespace {

TEST(Relevo, HandsEverythingOverInOrder) {
    for (const int cuantos : {0, 1, 4095, 4096, 4097, 100'000}) {
        std::vector<int> llegados;
        Relevo<int> relevo([&](int uno) { llegados.push_back(uno); });
        for (int i = 0; i < cuantos; ++i) relevo.dar(i);
        relevo.terminar();
        std::vector<int> esperados(static_cast<std::size_t>(cuantos));
        std::iota(esperados.begin(), esperados.end(), 0);
        EXPECT_EQ(llegados, esperados) << cuantos;
    }
}

TEST(Relevo, AFailureOverThereIsHeardOfHere) {
    Relevo<int> relevo([](int uno) {
        if (uno == 5'000) throw std::runtime_error("no");
    });
    for (int i = 0; i < 8'000; ++i) relevo.dar(i);
    EXPECT_THROW(relevo.terminar(), std::runtime_error);
}

TEST(Relevo, AFailureOverThereEndsTheGiving) {
    Relevo<int> relevo([](int) { throw std::runtime_error("no"); });
    const auto sinFin = [&] {
        for (;;) relevo.dar(0);
    };
    EXPECT_THROW(sinFin(), std::runtime_error);
}

TEST(Relevo, WhoeverGivesUpLeavesNoThreadBehind) {
    int llegados = 0;
    {
        Relevo<int> relevo([&](int) { ++llegados; });
        for (int i = 0; i < 10'000; ++i) relevo.dar(i);
    }
    EXPECT_EQ(llegados, 8192) << "what was on its way arrives, the open batch does not";
}

}  // namespace
}  // namespace telvane
