// The core's loop on the toolkit's.
#include "app/qt/bucle_qt.h"

#include <unistd.h>

#include <chrono>

#include <QTest>
#include <gtest/gtest.h>

namespace telvane {
namespace {

using namespace std::chrono_literals;

class BucleDeQt : public ::testing::Test {
   protected:
    BucleDeQt() {
        if (::pipe(tubo) != 0) throw std::runtime_error("pipe");
    }
    ~BucleDeQt() override {
        for (const int extremo : tubo) ::close(extremo);
    }
    void escribir() { ASSERT_EQ(::write(tubo[1], "x", 1), 1); }
    void leer() {
        char byte = 0;
        ASSERT_EQ(::read(tubo[0], &byte, 1), 1);
    }

    // Lets the loop turn until an alarm of another loop has come: what was due before it has been delivered.
    static void pasar(std::chrono::milliseconds tiempo) {
        BucleQt otro;
        bool paso = false;
        const auto valla = otro.alarma(tiempo, [&] { paso = true; });
        ASSERT_TRUE(QTest::qWaitFor([&] { return paso; }));
    }

    int tubo[2] = {-1, -1};
    BucleQt bucle;
};

TEST_F(BucleDeQt, AnAlarmComesOnceAndNeverEarly) {
    int veces = 0;
    const auto antes = std::chrono::steady_clock::now();
    const auto alarma = bucle.alarma(20ms, [&] { ++veces; });
    EXPECT_TRUE(QTest::qWaitFor([&] { return veces == 1; }));
    EXPECT_GE(std::chrono::steady_clock::now() - antes, 20ms);
    pasar(60ms);
    EXPECT_EQ(veces, 1);
}

TEST_F(BucleDeQt, ADroppedAlarmDoesNotCome) {
    bool llego = false;
    bucle.alarma(1ms, [&] { llego = true; }).reset();
    pasar(20ms);
    EXPECT_FALSE(llego);
}

TEST_F(BucleDeQt, AnAlarmMayDropItself) {
    Bucle::Asidero alarma;
    std::string texto(100, 'x');
    std::size_t largo = 0;
    alarma = bucle.alarma(1ms, [&alarma, texto, &largo] {
        alarma.reset();
        largo = texto.size();
    });
    EXPECT_TRUE(QTest::qWaitFor([&] { return largo == texto.size(); }));
}

TEST_F(BucleDeQt, ADescriptorWithBytesCallsUntilTheyAreRead) {
    int veces = 0;
    const auto vigilancia = bucle.vigilarLectura(tubo[0], [&] {
        ++veces;
        leer();
    });
    escribir();
    escribir();
    EXPECT_TRUE(QTest::qWaitFor([&] { return veces == 2; }));
}

TEST_F(BucleDeQt, AWatchMayDropItself) {
    Bucle::Asidero vigilancia;
    int veces = 0;
    vigilancia = bucle.vigilarLectura(tubo[0], [&] {
        vigilancia.reset();
        ++veces;
    });
    escribir();
    EXPECT_TRUE(QTest::qWaitFor([&] { return veces == 1; }));
    pasar(20ms);
    EXPECT_EQ(veces, 1) << "los bytes siguen ahí, la vigilancia no";
}

TEST_F(BucleDeQt, APauseHoldsTheEventsBackAndDeliversThemAfterwards) {
    std::string orden;
    const auto vigilancia = bucle.vigilarLectura(tubo[0], [&] {
        leer();
        orden += 'd';
    });
    bucle.pausar(40ms, [&] { orden += 'p'; });
    escribir();
    EXPECT_TRUE(QTest::qWaitFor([&] { return orden.size() == 2; }));
    EXPECT_EQ(orden, "pd") << "the bytes were there first";
}

TEST_F(BucleDeQt, OnceStoppedItDeliversNothingMore) {
    bool llego = false;
    const auto alarma = bucle.alarma(1ms, [&] { llego = true; });
    bucle.detener();
    pasar(20ms);
    EXPECT_FALSE(llego);
}

}  // namespace
}  // namespace telvane
