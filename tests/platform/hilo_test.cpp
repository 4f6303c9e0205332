#include "platform/hilo.h"

#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <fstream>
#include <list>
#include <stdexcept>

#include <gtest/gtest.h>

#include "tests/apoyo/saneado.h"

namespace telvane {
namespace {

// Pages of this process's address space.
std::int64_t paginas() {
    std::int64_t cuantas = 0;
    std::ifstream("/proc/self/statm") >> cuantas;
    return cuantas;
}

TEST(Hilo, ItsWorkIsDoneOnceItIsGone) {
    std::atomic<int> hechos = 0;
    {
        std::list<Hilo> hilos;
        for (int i = 0; i < 8; ++i) hilos.emplace_back([&] { ++hechos; });
    }
    EXPECT_EQ(hechos, 8);
}

TEST(Hilo, ItsStackIsBigEnoughForAnException) {
    bool atrapada = false;
    {
        const Hilo hilo([&] {
            try {
                throw std::runtime_error("x");
            } catch (const std::exception&) {
                atrapada = true;
            }
        });
    }
    EXPECT_TRUE(atrapada);
}

TEST(Hilo, GivesItsStackBack) {
    if (saneado()) GTEST_SKIP() << "the sanitizers keep a shadow of it";
    const auto antes = paginas();
    {
        std::list<Hilo> hilos;
        for (int i = 0; i < 4; ++i) hilos.emplace_back([] {});
        EXPECT_GT(paginas(), antes);
    }
    EXPECT_LT(paginas(), antes + 128) << "less than one of them";
}

}  // namespace
}  // namespace telvane
