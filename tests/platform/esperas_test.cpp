#include "platform/esperas.h"

#include <gtest/gtest.h>

#include "tests/apoyo/bucle_prueba.h"

namespace telvane {
namespace {

using namespace std::chrono_literals;

class EsperasTest : public ::testing::Test {
   protected:
    EsperasTest() {
        bucle.alTerminarSuceso([this] { esperas.revisar(); });
    }

    std::string ahora() { return segundosComoTexto(bucle.reloj().segundosDelDia()); }
    Tarea<> esperar(std::chrono::milliseconds limite, std::string nombre) {
        co_await esperas.hasta(ahora(), limite, [this] { return bandera; });
        diario += nombre;
    }
    Tarea<> pausar(std::chrono::nanoseconds duracion, std::string nombre) {
        co_await esperas.sinCeder(duracion);
        diario += nombre;
    }

    BuclePrueba bucle;
    Esperas esperas{bucle, bucle.reloj(), tareas};
    std::exception_ptr fallo;
    Tareas tareas{[this](std::exception_ptr e) { fallo = e; }};
    bool bandera = false;
    std::string diario;
};

TEST_F(EsperasTest, AWaitEndsWithItsLimit) {
    tareas.lanzar(esperar(1s, "a"));
    bucle.avanzar(990ms);
    EXPECT_EQ(diario, "");
    bucle.avanzar(20ms);
    EXPECT_EQ(diario, "a");
}

TEST_F(EsperasTest, AWaitEndsAtOnceWhenItsConditionHoldsAfterAnEvent) {
    const auto inicio = bucle.reloj().monotono();
    tareas.lanzar(esperar(1s, "a"));
    bucle.programar(200ms, [this] { bandera = true; });
    ASSERT_TRUE(bucle.correrHasta([&] { return !diario.empty(); }, 2s));
    EXPECT_EQ(bucle.reloj().monotono() - inicio, 200ms);
}

TEST_F(EsperasTest, AWaitYieldsOnceEvenIfItsConditionHoldsFromTheStart) {
    bandera = true;
    tareas.lanzar(esperar(1s, "a"));
    EXPECT_EQ(diario, "");
    bucle.avanzar(0ms);
    EXPECT_EQ(diario, "a");
}

TEST_F(EsperasTest, AWaitOverMidnightEndsWithItsConditionOnly) {
    bucle.reloj().ponerHora({2026, 11, 20, 23h + 59min + 59s + 500ms});
    tareas.lanzar(esperar(1s, "a"));
    bucle.avanzar(60s);
    EXPECT_EQ(diario, "");
    bucle.programar(1s, [this] { bandera = true; });
    bucle.avanzar(1s);
    EXPECT_EQ(diario, "a");
}

TEST_F(EsperasTest, AClockSetForwardEndsTheWait) {
    tareas.lanzar(esperar(5s, "a"));
    bucle.reloj().saltar(1h);
    bucle.avanzar(1s);
    EXPECT_EQ(diario, "a");
}

TEST_F(EsperasTest, AClockThatWasSetBackAndIsSetRightAgainEndsTheWaitWithinASecond) {
    tareas.lanzar(esperar(2s, "a"));
    bucle.avanzar(500ms);
    bucle.reloj().saltar(-1h);
    bucle.avanzar(10s);
    ASSERT_EQ(diario, "");
    bucle.reloj().saltar(1h);
    bucle.avanzar(1s);
    EXPECT_EQ(diario, "a");
}

TEST_F(EsperasTest, APauseHoldsEveryEventBackUntilItsEnd) {
    bucle.programar(500ms, [this] { diario += "suceso "; });
    tareas.lanzar(pausar(2s, "pausa "));
    bucle.avanzar(1999ms);
    EXPECT_EQ(diario, "");
    bucle.avanzar(1ms);
    EXPECT_EQ(diario, "pausa suceso ");
}

TEST_F(EsperasTest, APauseIsMeasuredOnTheMonotonicClock) {
    bucle.reloj().ponerHora({2026, 11, 20, 23h + 59min + 59s});
    tareas.lanzar(pausar(2s, "a"));
    bucle.reloj().saltar(-1h);
    bucle.avanzar(2s);
    EXPECT_EQ(diario, "a");
}

TEST_F(EsperasTest, AnOperationThatYieldedGoesOnOnlyAfterTheOnesStartedLater) {
    tareas.lanzar(esperar(1s, "primera "));
    bucle.programar(500ms, [this] { tareas.lanzar(esperar(2s, "segunda ")); });
    bucle.avanzar(2400ms);
    EXPECT_EQ(diario, "");
    bucle.avanzar(1s);
    EXPECT_EQ(diario, "segunda primera ");
}

TEST_F(EsperasTest, AnOperationDestroyedInItsWaitIsForgotten) {
    {
        Tareas breves{[](std::exception_ptr) {}};
        breves.lanzar(esperar(1s, "a"));
        breves.lanzar(pausar(1s, "b"));
    }
    bandera = true;
    bucle.avanzar(3s);
    EXPECT_EQ(diario, "");
}

TEST_F(EsperasTest, WhatAnOperationThrowsIsReported) {
    const auto fallar = []() -> Tarea<int> {
        throw std::runtime_error("nadie lo esperaba");
        co_return 1;
    };
    tareas.lanzar([](auto interior) -> Tarea<> { co_await interior(); }(fallar));
    ASSERT_TRUE(fallo);
    EXPECT_THROW(std::rethrow_exception(fallo), std::runtime_error);
}

TEST_F(EsperasTest, AnAnswerThatComesAtOnceOrLaterResumesTheOperation) {
    std::function<void(int)> contestar;
    const auto preguntar = [](auto& diarioRef, auto& donde) -> Tarea<> {
        const int uno = co_await Aviso<int>([](auto listo) { listo(1); });
        const int dos = co_await Aviso<int>([&](auto listo) { donde = listo; });
        diarioRef += std::to_string(uno) + std::to_string(dos);
    };
    tareas.lanzar(preguntar(diario, contestar));
    EXPECT_EQ(diario, "");
    contestar(2);
    EXPECT_EQ(diario, "12");
}

}  // namespace
}  // namespace telvane
