// The channel: thresholds, buffer, refusals, and whose port it is.
#include "link/mscomm.h"

#include <malloc.h>

#include <numeric>

#include <gtest/gtest.h>

#include "link/protocolo.h"
#include "link/siguiendo.h"
#include "simulator/puertos_simulados.h"
#include "tests/apoyo/bucle_prueba.h"
#include "tests/apoyo/saneado.h"

namespace telvane {
namespace {

using namespace std::chrono_literals;

class MSCommTest : public ::testing::Test {
   protected:
    MSCommTest() {
        puertos.conectar(1);
        puertos.agregar(2);
        for (auto* canal : {&a, &b}) {
            canal->CommPort(1);
            canal->Settings("19200,n,8,1");
            canal->InputLen(1);
            canal->RThreshold(1);
        }
    }
    static std::vector<std::uint8_t> serie(std::size_t cuantos) {
        std::vector<std::uint8_t> bytes(cuantos);
        std::iota(bytes.begin(), bytes.end(), std::uint8_t{0});
        return bytes;
    }
    void llegan(std::size_t cuantos) {
        puertos.inyectar(1, serie(cuantos));
        bucle.avanzar(1ms);
    }

    BuclePrueba bucle;
    PuertosSimulados puertos{bucle, bucle.reloj()};
    Tenencia tenencia;
    MSComm a{puertos, tenencia};
    MSComm b{puertos, tenencia};
    int sucesos = 0;
};

TEST_F(MSCommTest, OneEventForEveryThresholdThatTheHandlerConsumes) {
    a.RThreshold(31);
    a.alComunicar = [&] {
        ++sucesos;
        EXPECT_EQ(a.CommEvent(), suceso::kRecibido);
        for (int i = 0; i < 31; ++i) a.Input();
    };
    a.PortOpen(true);
    llegan(30);
    EXPECT_EQ(sucesos, 0);
    llegan(1);
    EXPECT_EQ(sucesos, 1);
    llegan(62);
    EXPECT_EQ(sucesos, 3);
    llegan(40);
    EXPECT_EQ(sucesos, 4);
    EXPECT_EQ(a.InBufferCount(), 9u);
    llegan(22);
    EXPECT_EQ(sucesos, 5) << "what was left over counts";
}

TEST_F(MSCommTest, AHandlerThatTakesNothingIsAskedAgainOnlyWhenMoreComes) {
    a.alComunicar = [&] { ++sucesos; };
    a.PortOpen(true);
    llegan(5);
    EXPECT_EQ(sucesos, 1);
    llegan(1);
    EXPECT_EQ(sucesos, 2);
}

TEST_F(MSCommTest, InputTakesInputLenBytesOrAllForZero) {
    a.PortOpen(true);
    llegan(10);
    EXPECT_EQ(a.Input(), (std::vector<std::uint8_t>{0}));
    a.InputLen(4);
    EXPECT_EQ(a.Input(), (std::vector<std::uint8_t>{1, 2, 3, 4}));
    a.InputLen(0);
    EXPECT_EQ(a.Input().size(), 5u);
    EXPECT_TRUE(a.Input().empty());
    EXPECT_EQ(a.InputByte(), 0);
}

TEST_F(MSCommTest, WhatExceedsTheBufferIsLostAndRaisesTheOverflowEvent) {
    a.InBufferSize(static_cast<std::int16_t>(0x8000));
    EXPECT_EQ(a.InBufferSize(), 32768u);
    a.RThreshold(0);
    std::vector<int> codigos;
    a.alComunicar = [&] { codigos.push_back(a.CommEvent()); };
    a.PortOpen(true);
    llegan(32768);
    EXPECT_TRUE(codigos.empty());
    llegan(1);
    EXPECT_EQ(codigos, std::vector<int>{suceso::kDesbordamiento});
    EXPECT_EQ(a.InBufferCount(), 32768u);
}

// A frame that keeps one byte too many leaves it for ever: the buffer is never empty again.
TEST_F(MSCommTest, WhatWasTakenIsNotKeptOnALineThatAlwaysLeavesAByte) {
    if (saneado()) GTEST_SKIP() << "the sanitizer's heap is not counted";
    const auto enUso = [&] {
        puertos.olvidarTrafico(1);
        return ::mallinfo2().uordblks + ::mallinfo2().hblkhd;
    };
    a.RThreshold(1000);
    a.alComunicar = [&] {
        for (int i = 0; i < 1000; ++i) a.InputByte();
    };
    a.PortOpen(true);
    llegan(1);
    llegan(1000);
    const auto antes = enUso();
    auto despues = antes;
    for (int i = 0; i < 1000; ++i) {
        llegan(1000);
        despues = enUso();
    }
    EXPECT_EQ(a.InBufferCount(), 1u);
    EXPECT_LE(despues, antes + std::size_t{64} * 1024) << "a million bytes came";
}

TEST_F(MSCommTest, ARefusedAssignmentIsAnErrorThatMayBePassedOver) {
    EXPECT_THROW(a.CommPort(0), ErrorPuerto);
    EXPECT_THROW(a.CommPort(99), ErrorPuerto);
    EXPECT_THROW(a.CommPort(7), ErrorPuerto) << "a number without a port";
    EXPECT_THROW(a.Handshaking(1), ErrorPuerto);
    EXPECT_THROW(a.InputMode(MSComm::Modo::texto), ErrorPuerto);
    EXPECT_THROW(a.InputLen(-1), ErrorPuerto);
    EXPECT_THROW(a.RThreshold(-1), ErrorPuerto);
    EXPECT_THROW(a.SThreshold(1), ErrorPuerto);
    EXPECT_THROW(a.InBufferSize(0), ErrorPuerto);
    EXPECT_THROW(a.OutBufferSize(0), ErrorPuerto);
    EXPECT_THROW(a.EOFEnable(true), ErrorPuerto);
    EXPECT_THROW(a.DSRHolding(false), ErrorPuerto);
    EXPECT_THROW(a.CTSHolding(false), ErrorPuerto);
    EXPECT_THROW(a.CDHolding(false), ErrorPuerto);
    EXPECT_THROW(a.Settings("tonteria"), ErrorPuerto);
    EXPECT_THROW(a.InBufferCount(3), ErrorPuerto);
    EXPECT_THROW(a.Output(1), ErrorPuerto) << "closed";
    EXPECT_FALSE(siguiendo([&] { a.CDHolding(false); }));
    a.CommPort(1);
    EXPECT_TRUE(siguiendo([&] { a.PortOpen(true); }));
}

TEST_F(MSCommTest, NumbersEndWhereASearchEnds) {
    const auto motivo = [&](int numero) -> std::string {
        try {
            a.CommPort(numero);
        } catch (const ErrorPuerto& error) {
            return error.what();
        }
        return {};
    };
    EXPECT_EQ(motivo(12), "no existe COM12: enchufe su adaptador y repita");
    EXPECT_EQ(motivo(13), "número de puerto fuera de rango");
}

TEST_F(MSCommTest, APortThatDoesNotExistIsNotOpenedInPlaceOfAnEarlierOne) {
    siguiendo([&] { a.CommPort(7); });
    EXPECT_THROW(a.PortOpen(true), ErrorPuerto);
    EXPECT_FALSE(a.PortOpen());
    EXPECT_FALSE(puertos.abierto(1));
}

TEST_F(MSCommTest, APortBelongsToTheChannelThatOpenedItLast) {
    a.alComunicar = [&] { ++sucesos; };
    a.PortOpen(true);
    a.RThreshold(100);
    llegan(5);
    b.PortOpen(true);
    EXPECT_FALSE(a.PortOpen());
    EXPECT_TRUE(b.PortOpen());
    EXPECT_EQ(b.InBufferCount(), 0u) << "what the earlier opening held is gone";
    llegan(3);
    EXPECT_EQ(sucesos, 0);
    EXPECT_EQ(b.InBufferCount(), 3u);
    a.PortOpen(false);
    EXPECT_TRUE(b.PortOpen()) << "closing a closed channel takes nothing from the owner";
}

TEST_F(MSCommTest, OpeningAnOpenChannelDiscardsWhatItHeld) {
    a.RThreshold(100);
    a.PortOpen(true);
    llegan(5);
    a.PortOpen(true);
    EXPECT_TRUE(a.PortOpen());
    EXPECT_EQ(a.InBufferCount(), 0u);
}

TEST_F(MSCommTest, AnotherPortNumberClosesTheChannel) {
    a.PortOpen(true);
    a.CommPort(1);
    EXPECT_TRUE(a.PortOpen());
    a.CommPort(2);
    EXPECT_FALSE(a.PortOpen());
}

TEST_F(MSCommTest, AHandlerThatClosesTheChannelGetsNothingMore) {
    a.alComunicar = [&] {
        ++sucesos;
        a.PortOpen(false);
    };
    a.PortOpen(true);
    llegan(10);
    EXPECT_EQ(sucesos, 1);
    EXPECT_TRUE(a.Input().empty());
}

TEST_F(MSCommTest, ADeviceThatIsGoneLeavesTheChannelReadableClosableAndReopenable) {
    a.RThreshold(100);
    a.PortOpen(true);
    llegan(3);
    puertos.colgar(1);
    bucle.avanzar(1s);
    EXPECT_TRUE(a.PortOpen());
    EXPECT_EQ(a.Input(), std::vector<std::uint8_t>{0});
    EXPECT_THROW(a.Output(kSonda), ErrorPuerto);
    a.PortOpen(false);
    puertos.reponer(1);
    a.PortOpen(true);
    llegan(1);
    EXPECT_EQ(a.InBufferCount(), 1u);
}

TEST_F(MSCommTest, EveryOpeningStartsWithoutALastEvent) {
    a.PortOpen(true);
    a.suceder(suceso::kRecibido);
    a.PortOpen(false);
    EXPECT_EQ(a.CommEvent(), suceso::kRecibido) << "closing keeps it";
    a.CommPort(1);
    EXPECT_EQ(a.CommEvent(), suceso::kNinguno);
    a.suceder(suceso::kRecibido);
    a.PortOpen(true);
    EXPECT_EQ(a.CommEvent(), suceso::kNinguno);
}

TEST_F(MSCommTest, LinesFollowTheirAssignments) {
    a.DTREnable(false);
    a.PortOpen(true);
    EXPECT_FALSE(puertos.ajustes(1).dtr);
    EXPECT_FALSE(puertos.ajustes(1).rts);
    EXPECT_EQ(puertos.ajustes(1).baudios, 19200);
    a.RTSEnable(true);
    EXPECT_TRUE(puertos.ajustes(1).rts);
}

TEST_F(MSCommTest, SettingsLeaveTheLinesAsTheyWere) {
    for (const bool si : {true, false}) {
        a.PortOpen(false);
        a.DTREnable(si);
        a.RTSEnable(!si);
        a.Settings("9600,e,7,2");
        a.PortOpen(true);
        EXPECT_EQ(puertos.ajustes(1).baudios, 9600);
        EXPECT_EQ(puertos.ajustes(1).dtr, si);
        EXPECT_EQ(puertos.ajustes(1).rts, !si);
    }
}

}  // namespace
}  // namespace telvane
