#include "platform/bucle_posix.h"

#include <signal.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace telvane {
namespace {

using namespace std::chrono_literals;

class Tubo {
   public:
    Tubo() {
        if (::pipe(extremos_.data()) != 0) throw std::runtime_error("pipe");
    }
    Tubo(const Tubo&) = delete;
    Tubo& operator=(const Tubo&) = delete;
    ~Tubo() {
        cerrarEscritura();
        ::close(extremos_[0]);
    }
    int lectura() const { return extremos_[0]; }
    void poner(char letra) { ASSERT_EQ(::write(extremos_[1], &letra, 1), 1); }
    char tomar() {
        char letra = 0;
        EXPECT_EQ(::read(extremos_[0], &letra, 1), 1);
        return letra;
    }
    void cerrarEscritura() {
        if (extremos_[1] >= 0) ::close(extremos_[1]);
        extremos_[1] = -1;
    }

   private:
    std::array<int, 2> extremos_{-1, -1};
};

TEST(BuclePosix, AlarmsComeInTheOrderOfTheirTimeNotOfTheirArming) {
    BuclePosix bucle;
    std::string orden;
    // Far enough apart that no rest of the machine between two armings turns their order round.
    const auto c = bucle.alarma(1h, [&] { orden += 'c'; });
    const auto b = bucle.alarma(1s, [&] { orden += 'b'; });
    const auto a = bucle.alarma(0ms, [&] { orden += 'a'; });
    EXPECT_TRUE(bucle.correrHasta([&] { return orden.size() == 2; }));
    EXPECT_EQ(orden, "ab");
}

TEST(BuclePosix, ALoopThatWatchesNothingEnds) {
    BuclePosix bucle;
    bucle.correr();
    EXPECT_FALSE(bucle.correrHasta([] { return false; }));
    EXPECT_EQ(bucle.despertares(), 0U);
}

TEST(BuclePosix, WaitingEndsAtItsLimitWithoutOtherWakeUps) {
    BuclePosix bucle;
    const auto antes = std::chrono::steady_clock::now();
    EXPECT_FALSE(bucle.correrHasta([] { return false; }, 30ms));
    EXPECT_GE(std::chrono::steady_clock::now() - antes, 30ms);
    // The sleep may be cut a little short of its end by the clock's grain.
    EXPECT_LE(bucle.despertares(), 2U);
}

TEST(BuclePosix, AConditionThatHoldsNeedsNoEvent) {
    BuclePosix bucle;
    bool sono = false;
    const auto alarma = bucle.alarma(0ms, [&] { sono = true; });
    EXPECT_TRUE(bucle.correrHasta([] { return true; }));
    EXPECT_FALSE(sono);
}

TEST(BuclePosix, TheConditionIsTestedAfterEachEvent) {
    BuclePosix bucle;
    int sonaron = 0;
    std::vector<Bucle::Asidero> alarmas;
    for (int i = 0; i < 3; ++i) alarmas.push_back(bucle.alarma(0ms, [&] { ++sonaron; }));
    EXPECT_TRUE(bucle.correrHasta([&] { return sonaron == 1; }));
    EXPECT_EQ(sonaron, 1);
    EXPECT_TRUE(bucle.correrHasta([&] { return sonaron == 3; }));
}

TEST(BuclePosix, TerminarEndsTheInnermostRun) {
    BuclePosix bucle;
    bool despues = false;
    Bucle::Asidero ultima;
    const auto externa = bucle.alarma(0ms, [&] {
        const auto interna = bucle.alarma(0ms, [&] { bucle.terminar(); });
        EXPECT_FALSE(bucle.correrHasta([] { return false; }));
        // The outer run goes on and delivers it.
        ultima = bucle.alarma(0ms, [&] { despues = true; });
    });
    bucle.correr();
    EXPECT_TRUE(despues);
}

TEST(BuclePosix, AnAlarmThatIsDestroyedDoesNotSound) {
    BuclePosix bucle;
    bool sono = false;
    // Armed first, so that it comes first however long the machine rests between the two.
    Bucle::Asidero condenada;
    const auto verdugo = bucle.alarma(0ms, [&] { condenada.reset(); });
    condenada = bucle.alarma(1ms, [&] { sono = true; });
    bucle.correr();
    EXPECT_FALSE(sono);
}

TEST(BuclePosix, AnAlarmMayDestroyItselfAndArmTheNext) {
    BuclePosix bucle;
    Bucle::Asidero alarma;
    int veces = 0;
    Bucle::Accion accion;
    accion = [&] {
        const std::string captura(100, 'x');
        alarma.reset();
        if (++veces < 5) alarma = bucle.alarma(0ms, accion);
        EXPECT_EQ(captura.size(), 100U);
    };
    alarma = bucle.alarma(0ms, accion);
    bucle.correr();
    EXPECT_EQ(veces, 5);
}

TEST(BuclePosix, AHandleMayOutliveItsLoop) {
    Bucle::Asidero alarma;
    Bucle::Asidero lectura;
    Tubo tubo;
    const auto testigo = std::make_shared<int>(0);
    {
        BuclePosix bucle;
        alarma = bucle.alarma(1h, [testigo] {});
        lectura = bucle.vigilarLectura(tubo.lectura(), [testigo] {});
    }
    alarma.reset();
    lectura.reset();
    EXPECT_EQ(testigo.use_count(), 1) << "what the actions held is let go";
}

TEST(BuclePosix, AReadableDescriptorCallsUntilItIsRead) {
    BuclePosix bucle;
    Tubo tubo;
    int llamadas = 0;
    const auto vigilancia = bucle.vigilarLectura(tubo.lectura(), [&] {
        if (++llamadas == 3) tubo.tomar();
    });
    tubo.poner('x');
    EXPECT_FALSE(bucle.correrHasta([] { return false; }, 5ms));
    EXPECT_EQ(llamadas, 3);
}

TEST(BuclePosix, AWatchMayDestroyItselfAndItsNeighbour) {
    BuclePosix bucle;
    Tubo uno;
    Tubo otro;
    int llamadas = 0;
    Bucle::Asidero a;
    Bucle::Asidero b;
    const auto quitar = [&, peso = std::string(100, 'x')] {
        a.reset();
        b.reset();
        ++llamadas;
        EXPECT_EQ(peso.size(), 100U);
    };
    a = bucle.vigilarLectura(uno.lectura(), quitar);
    b = bucle.vigilarLectura(otro.lectura(), quitar);
    uno.poner('x');
    otro.poner('x');
    bucle.correr();
    EXPECT_EQ(llamadas, 1);
}

TEST(BuclePosix, AWatchMayAddManyOthersWhileItIsCalled) {
    BuclePosix bucle;
    std::array<Tubo, 40> tubos;
    std::vector<Bucle::Asidero> vigilancias;
    int leidas = 0;
    vigilancias.push_back(bucle.vigilarLectura(tubos[0].lectura(), [&] {
        tubos[0].tomar();
        for (std::size_t i = 1; i < tubos.size(); ++i) {
            tubos[i].poner('x');
            vigilancias.push_back(bucle.vigilarLectura(tubos[i].lectura(), [&, i] {
                tubos[i].tomar();
                ++leidas;
            }));
        }
    }));
    tubos[0].poner('x');
    EXPECT_TRUE(bucle.correrHasta([&] { return leidas == 39; }, 1s));
}

TEST(BuclePosix, BytesInTimeComeBeforeTheirDeadline) {
    BuclePosix bucle;
    Tubo tubo;
    std::string orden;
    const auto plazo = bucle.alarma(0ms, [&] { orden += 'p'; });
    const auto vigilancia = bucle.vigilarLectura(tubo.lectura(), [&] { orden += tubo.tomar(); });
    tubo.poner('b');
    EXPECT_TRUE(bucle.correrHasta([&] { return orden.size() == 2; }, 1s));
    EXPECT_EQ(orden, "bp");
}

TEST(BuclePosix, AnAlarmThatArmsItselfForAtOnceDoesNotStarveDescriptors) {
    BuclePosix bucle;
    Tubo tubo;
    bool leida = false;
    Bucle::Asidero alarma;
    Bucle::Accion otraVez;
    otraVez = [&] { alarma = bucle.alarma(0ms, otraVez); };
    otraVez();
    const auto vigilancia = bucle.vigilarLectura(tubo.lectura(), [&] {
        tubo.tomar();
        leida = true;
    });
    tubo.poner('x');
    EXPECT_TRUE(bucle.correrHasta([&] { return leida; }, 1s));
}

TEST(BuclePosix, APauseHoldsAReadableDescriptorWithoutSpinning) {
    BuclePosix bucle;
    Tubo tubo;
    std::string orden;
    const auto vigilancia = bucle.vigilarLectura(tubo.lectura(), [&] { orden += tubo.tomar(); });
    tubo.poner('b');
    bucle.pausar(20ms, [&] { orden += 'p'; });
    EXPECT_TRUE(bucle.correrHasta([&] { return orden.size() == 2; }, 1s));
    EXPECT_EQ(orden, "pb");
    EXPECT_LE(bucle.despertares(), 5U);
}

TEST(BuclePosix, ADescriptorClosedUnderItsWatchIsToldOnce) {
    BuclePosix bucle;
    int llamadas = 0;
    const int numero = ::dup(STDERR_FILENO);
    const auto vigilancia = bucle.vigilarLectura(numero, [&] { ++llamadas; });
    ::close(numero);
    EXPECT_FALSE(bucle.correrHasta([] { return false; }, 10ms));
    EXPECT_EQ(llamadas, 1);
}

TEST(BuclePosix, WhatAnEventThrowsLeavesTheLoopUsable) {
    BuclePosix bucle;
    const auto mala = bucle.alarma(0ms, [] { throw std::runtime_error("x"); });
    bool sono = false;
    const auto buena = bucle.alarma(1ms, [&] { sono = true; });
    EXPECT_THROW(bucle.correr(), std::runtime_error);
    bucle.correr();
    EXPECT_TRUE(sono);
}

TEST(Senales, ASignalIsAnEventOfTheLoopInsteadOfADeath) {
    BuclePosix bucle;
    std::vector<int> llegadas;
    {
        const Senales senales(bucle, {SIGUSR1, SIGUSR2}, [&](int senal) { llegadas.push_back(senal); });
        ASSERT_EQ(::raise(SIGUSR2), 0);
        EXPECT_TRUE(bucle.correrHasta([&] { return llegadas.size() == 1; }, 1s));
        ASSERT_EQ(::raise(SIGUSR1), 0);
        EXPECT_TRUE(bucle.correrHasta([&] { return llegadas.size() == 2; }, 1s));
        // Never read: dropped at the end, when the signal is let through again.
        ASSERT_EQ(::raise(SIGUSR1), 0);
    }
    EXPECT_EQ(llegadas, (std::vector{SIGUSR2, SIGUSR1}));
}

TEST(Senales, MayBeEndedFromTheirHandler) {
    BuclePosix bucle;
    std::unique_ptr<Senales> senales;
    int llegadas = 0;
    senales = std::make_unique<Senales>(bucle, std::initializer_list<int>{SIGUSR1}, [&](int) {
        ++llegadas;
        senales.reset();
    });
    ASSERT_EQ(::raise(SIGUSR1), 0);
    bucle.correr();
    EXPECT_EQ(llegadas, 1);
}

}  // namespace
}  // namespace telvane
