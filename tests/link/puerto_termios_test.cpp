#include "link/puerto_termios.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <termios.h>

#include <array>
#include <chrono>
#include <memory>
#include <numeric>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "link/mscomm.h"
#include "platform/bucle_posix.h"
#include "tests/link/pty_prueba.h"

namespace telvane {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

// Longest that a test waits for what must come.
constexpr auto kPaciencia = 5s;
// Time in which something that must not come would have come.
constexpr auto kSilencio = 30ms;

std::vector<std::uint8_t> todosLosBytes() {
    std::vector<std::uint8_t> bytes(256);
    std::iota(bytes.begin(), bytes.end(), std::uint8_t{0});
    return bytes;
}

class PuertoTermiosTest : public testing::Test {
   protected:
    PtyPrueba pty;
    BuclePosix bucle;
    int despertares = 0;

    std::unique_ptr<PuertoTermios> abrir() {
        return std::make_unique<PuertoTermios>(bucle, pty.ruta(), AjustesLinea::leer("19200,n,8,1"),
                                               [this] { ++despertares; });
    }
    bool esperarDespertares(int cuantos) {
        return bucle.correrHasta([&] { return despertares >= cuantos; }, kPaciencia);
    }
    // Lets the loop run; how often it called us meanwhile.
    int despertaresEnSilencio() {
        const int antes = despertares;
        static_cast<void>(bucle.correrHasta([] { return false; }, kSilencio));
        return despertares - antes;
    }
    static std::vector<std::uint8_t> leerTodo(PuertoSerie& puerto) {
        std::vector<std::uint8_t> bytes;
        std::array<std::uint8_t, 1000> trozo;
        while (const auto n = puerto.leer(trozo))
            bytes.insert(bytes.end(), trozo.begin(), trozo.begin() + static_cast<std::ptrdiff_t>(n));
        return bytes;
    }
    MotivoPuerto motivoAlAbrir(const std::filesystem::path& ruta) {
        try {
            const PuertoTermios puerto(bucle, ruta, AjustesLinea(), [] {});
        } catch (const ErrorPuerto& error) {
            EXPECT_NE(std::string(error.what()).find(ruta.string()), std::string::npos) << error.what();
            return error.motivo();
        }
        ADD_FAILURE() << "opened " << ruta;
        return MotivoPuerto::otro;
    }
    MotivoPuerto motivoAlLeer(PuertoSerie& puerto) {
        std::array<std::uint8_t, 8> trozo;
        try {
            while (puerto.leer(trozo) > 0) continue;
        } catch (const ErrorPuerto& error) {
            return error.motivo();
        }
        return MotivoPuerto::otro;
    }
};

TEST_F(PuertoTermiosTest, EveryByteValueComesInUnchanged) {
    const auto puerto = abrir();
    pty.enviar(todosLosBytes());
    std::vector<std::uint8_t> recibidos;
    EXPECT_TRUE(bucle.correrHasta(
        [&] {
            const auto mas = leerTodo(*puerto);
            recibidos.insert(recibidos.end(), mas.begin(), mas.end());
            return recibidos.size() >= 256;
        },
        kPaciencia));
    EXPECT_EQ(recibidos, todosLosBytes());
}

TEST_F(PuertoTermiosTest, EveryByteValueGoesOutUnchanged) {
    const auto puerto = abrir();
    puerto->escribir(todosLosBytes());
    EXPECT_EQ(pty.recibir(256), todosLosBytes());
}

TEST_F(PuertoTermiosTest, NothingIsEchoed) {
    const auto puerto = abrir();
    pty.enviar("U\n");
    ASSERT_TRUE(esperarDespertares(1));
    pollfd estado{pty.maestro(), POLLIN, 0};
    EXPECT_EQ(::poll(&estado, 1, 0), 0);
}

TEST_F(PuertoTermiosTest, ABlockInPiecesWakesOnce) {
    const auto puerto = abrir();
    puerto->umbral(64);
    pty.enviar(std::string(20, 'a'));
    EXPECT_EQ(despertaresEnSilencio(), 0);
    pty.enviar(std::string(43, 'b'));
    EXPECT_EQ(despertaresEnSilencio(), 0);
    pty.enviar("c");
    ASSERT_TRUE(esperarDespertares(1));
    EXPECT_EQ(leerTodo(*puerto).size(), 64U);
    EXPECT_EQ(despertaresEnSilencio(), 0);
}

TEST_F(PuertoTermiosTest, BytesBelowTheThresholdCanBeReadAllTheSame) {
    const auto puerto = abrir();
    puerto->umbral(31);
    pty.enviar("12345");
    EXPECT_EQ(despertaresEnSilencio(), 0);
    EXPECT_EQ(leerTodo(*puerto).size(), 5U);
    EXPECT_THAT(leerTodo(*puerto), IsEmpty());
}

TEST_F(PuertoTermiosTest, AThresholdLoweredWhileBytesWaitWakes) {
    const auto puerto = abrir();
    puerto->umbral(255);
    pty.enviar("12345");
    EXPECT_EQ(despertaresEnSilencio(), 0);
    puerto->umbral(5);
    EXPECT_TRUE(esperarDespertares(1));
}

TEST_F(PuertoTermiosTest, WhatWaitedBeforeOpeningIsDiscarded) {
    pty.enviar("old bytes\n");
    const auto puerto = abrir();
    EXPECT_EQ(despertaresEnSilencio(), 0);
    EXPECT_THAT(leerTodo(*puerto), IsEmpty());
}

TEST_F(PuertoTermiosTest, WhatWasUnreadAtClosingIsNotThereAtTheNextOpening) {
    auto puerto = abrir();
    pty.enviar("unread");
    ASSERT_TRUE(esperarDespertares(1));
    puerto.reset();
    puerto = abrir();
    pty.enviar("new");
    ASSERT_TRUE(bucle.correrHasta([&] { return despertares >= 2; }, kPaciencia));
    EXPECT_EQ(leerTodo(*puerto), (std::vector<std::uint8_t>{'n', 'e', 'w'}));
}

TEST_F(PuertoTermiosTest, ClosingDiscardsWhatWaited) {
    auto puerto = abrir();
    pty.enviar("unread");
    ASSERT_TRUE(esperarDespertares(1));
    puerto.reset();
    const int otro = ::open(pty.ruta().c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    ASSERT_GE(otro, 0);
    char letra = 0;
    EXPECT_EQ(::read(otro, &letra, 1), -1);
    EXPECT_EQ(errno, EAGAIN);
    ::close(otro);
}

TEST_F(PuertoTermiosTest, EmptyingDiscardsWhatWaitsAndNothingLater) {
    const auto puerto = abrir();
    pty.enviar("before");
    ASSERT_TRUE(esperarDespertares(1));
    puerto->vaciarEntrada();
    EXPECT_EQ(despertaresEnSilencio(), 0);
    pty.enviar("x");
    ASSERT_TRUE(esperarDespertares(2));
    EXPECT_THAT(leerTodo(*puerto), ElementsAre('x'));
}

TEST_F(PuertoTermiosTest, WhatWasWrittenBeforeClosingStillLeaves) {
    auto puerto = abrir();
    puerto->escribir(std::vector<std::uint8_t>{0x55});
    puerto.reset();
    EXPECT_THAT(pty.recibir(1), ElementsAre(0x55));
}

TEST_F(PuertoTermiosTest, AHangUpWakesOnceAndNeverSpins) {
    const auto puerto = abrir();
    pty.colgar();
    ASSERT_TRUE(esperarDespertares(1));
    const auto vueltas = bucle.despertares();
    EXPECT_EQ(despertaresEnSilencio(), 0);
    EXPECT_LE(bucle.despertares() - vueltas, 2U);
}

TEST_F(PuertoTermiosTest, AHangUpBelowTheThresholdWakesToo) {
    const auto puerto = abrir();
    puerto->umbral(64);
    pty.enviar("123");
    EXPECT_EQ(despertaresEnSilencio(), 0);
    pty.colgar();
    EXPECT_TRUE(esperarDespertares(1));
}

TEST_F(PuertoTermiosTest, ReadingAPortThatHungUpFailsEveryTime) {
    const auto puerto = abrir();
    pty.colgar();
    EXPECT_EQ(motivoAlLeer(*puerto), MotivoPuerto::desaparecido);
    EXPECT_EQ(motivoAlLeer(*puerto), MotivoPuerto::desaparecido);
    // Found by reading, before the loop could tell: nothing is left to be woken for.
    EXPECT_EQ(despertaresEnSilencio(), 0);
}

TEST_F(PuertoTermiosTest, WritingToAPortThatHungUpFails) {
    const auto puerto = abrir();
    pty.colgar();
    try {
        puerto->escribir(std::vector<std::uint8_t>{0xBE});
        FAIL() << "written";
    } catch (const ErrorPuerto& error) {
        EXPECT_EQ(error.motivo(), MotivoPuerto::desaparecido);
    }
}

TEST_F(PuertoTermiosTest, APortThatHungUpTakesEveryOtherRequestInSilence) {
    const auto puerto = abrir();
    pty.colgar();
    puerto->umbral(64);
    puerto->vaciarEntrada();
    puerto->dtr(true);
    puerto->romper(false);
    puerto->vigilarLinea(true);
    EXPECT_THAT(puerto->sucesosDeLinea(), IsEmpty());
}

TEST_F(PuertoTermiosTest, TheOwnerMayCloseAndOpenAgainFromItsWakeUp) {
    std::unique_ptr<PuertoTermios> puerto;
    std::string leido;
    const auto ajustes = AjustesLinea::leer("19200,n,8,1");
    const auto segundo = [&] {
        for (const auto byte : leerTodo(*puerto)) leido += static_cast<char>(byte);
    };
    puerto = std::make_unique<PuertoTermios>(bucle, pty.ruta(), ajustes, [&] {
        puerto.reset();
        puerto = std::make_unique<PuertoTermios>(bucle, pty.ruta(), ajustes, segundo);
        ++despertares;
    });
    pty.enviar("first");
    ASSERT_TRUE(esperarDespertares(1));
    pty.enviar("x");
    EXPECT_TRUE(bucle.correrHasta([&] { return leido == "x"; }, kPaciencia));
}

TEST_F(PuertoTermiosTest, ASecondOpenerIsRefusedAndTheFirstGoesOn) {
    auto primero = abrir();
    primero->umbral(2);
    EXPECT_EQ(motivoAlAbrir(pty.ruta()), MotivoPuerto::ocupado);
    pty.enviar("ab");
    ASSERT_TRUE(esperarDespertares(1));
    EXPECT_EQ(leerTodo(*primero).size(), 2U);
    // A refused opener leaves the reservation alone.
    EXPECT_EQ(motivoAlAbrir(pty.ruta()), MotivoPuerto::ocupado);
    primero.reset();
    EXPECT_NO_THROW(abrir());
}

// What is set on a pseudo-terminal stays while its other end does, whoever set it and however he ended.
TEST_F(PuertoTermiosTest, AKilledOwnerLeavesNoReservationOnAPseudoTerminal) {
    const auto vivo = abrir();
    int exclusivo = -1;
    const int otro = ::open(pty.ruta().c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_GE(otro, 0);
    ASSERT_EQ(::ioctl(otro, TIOCGEXCL, &exclusivo), 0);
    EXPECT_EQ(exclusivo, 0);
    ::close(otro);
}

TEST_F(PuertoTermiosTest, ARefusedSpeedReservesNothing) {
    AjustesLinea raros;
    raros.baudios = 12345;
    EXPECT_THROW(PuertoTermios(bucle, pty.ruta(), raros, [] {}), ErrorPuerto);
    EXPECT_NO_THROW(abrir());
}

TEST_F(PuertoTermiosTest, WhatIsNoPortIsToldApart) {
    EXPECT_EQ(motivoAlAbrir("/dev/null"), MotivoPuerto::noEsTerminal);
    EXPECT_EQ(motivoAlAbrir("/"), MotivoPuerto::noEsTerminal);
    EXPECT_EQ(motivoAlAbrir("/dev/no-such-port"), MotivoPuerto::noExiste);
    EXPECT_EQ(motivoAlAbrir("/dev/null/x"), MotivoPuerto::noExiste);
}

TEST_F(PuertoTermiosTest, WithoutPermissionTheGroupToJoinIsNamed) {
    constexpr uid_t kNadie = 65534;
    constexpr gid_t kGrupo = 20;
    if (::geteuid() != 0) GTEST_SKIP() << "only the superuser can stop being the device's owner";
    ASSERT_EQ(::chown(pty.ruta().c_str(), 0, kGrupo), 0);
    ASSERT_EQ(::chmod(pty.ruta().c_str(), 0660), 0);
    ASSERT_EQ(::seteuid(kNadie), 0);
    std::string mensaje;
    MotivoPuerto motivo = MotivoPuerto::otro;
    try {
        abrir();
    } catch (const ErrorPuerto& error) {
        mensaje = error.what();
        motivo = error.motivo();
    }
    ASSERT_EQ(::seteuid(0), 0);
    EXPECT_EQ(motivo, MotivoPuerto::sinPermiso);
    EXPECT_THAT(mensaje, testing::HasSubstr("al grupo " + grupoConPermiso(pty.ruta()) + " "));
}

TEST_F(PuertoTermiosTest, ALineThatTakesNoMoreFailsWithinItsDeadline) {
    const auto puerto = abrir();
    const std::vector<std::uint8_t> mucho(1'000'000);
    const auto antes = std::chrono::steady_clock::now();
    EXPECT_THROW(puerto->escribir(mucho), ErrorPuerto);
    EXPECT_GE(std::chrono::steady_clock::now() - antes, 1s);
    EXPECT_LT(std::chrono::steady_clock::now() - antes, 10s);
}

TEST_F(PuertoTermiosTest, TheLineIsRawWithModemLinesIgnoredAndNoHangUpAtClosing) {
    const auto puerto =
        std::make_unique<PuertoTermios>(bucle, pty.ruta(), AjustesLinea::leer("4800,n,8,2"), [] {});
    termios linea{};
    // Either end of the pair tells the same settings.
    ASSERT_EQ(::tcgetattr(pty.maestro(), &linea), 0);
    EXPECT_EQ(linea.c_lflag, 0U);
    EXPECT_EQ(linea.c_oflag, 0U);
    EXPECT_EQ(linea.c_iflag, static_cast<tcflag_t>(IGNBRK));
    EXPECT_EQ(linea.c_cflag & (CLOCAL | CREAD | CSTOPB | HUPCL | CRTSCTS),
              static_cast<tcflag_t>(CLOCAL | CREAD | CSTOPB));
    EXPECT_EQ(::cfgetospeed(&linea), static_cast<speed_t>(B4800));
}

TEST_F(PuertoTermiosTest, ClosingGivesTheTerminalItsSettingsBack) {
    termios antes{};
    ASSERT_EQ(::tcgetattr(pty.maestro(), &antes), 0);
    ASSERT_NE(antes.c_lflag & ECHO, 0U);
    { const auto puerto = abrir(); }
    termios despues{};
    ASSERT_EQ(::tcgetattr(pty.maestro(), &despues), 0);
    EXPECT_EQ(despues.c_iflag, antes.c_iflag);
    EXPECT_EQ(despues.c_oflag, antes.c_oflag);
    EXPECT_EQ(despues.c_cflag, antes.c_cflag);
    EXPECT_EQ(despues.c_lflag, antes.c_lflag);
    EXPECT_EQ(despues.c_cc[VMIN], antes.c_cc[VMIN]);
    EXPECT_EQ(::cfgetospeed(&despues), ::cfgetospeed(&antes));
}

TEST_F(PuertoTermiosTest, AnOpeningThatFailsHalfWayGivesThemBackToo) {
    termios antes{};
    ASSERT_EQ(::tcgetattr(pty.maestro(), &antes), 0);
    AjustesLinea raros;
    raros.baudios = 19201;
    EXPECT_THROW(PuertoTermios(bucle, pty.ruta(), raros, [] {}), ErrorPuerto);
    termios despues{};
    ASSERT_EQ(::tcgetattr(pty.maestro(), &despues), 0);
    EXPECT_EQ(despues.c_lflag, antes.c_lflag);
}

TEST_F(PuertoTermiosTest, ALineWithoutCountersIsNotLookedAt) {
    const auto puerto = abrir();
    puerto->vigilarLinea(true);
    const auto vueltas = bucle.despertares();
    static_cast<void>(bucle.correrHasta([] { return false; }, 250ms));
    EXPECT_LE(bucle.despertares() - vueltas, 2U);
    EXPECT_THAT(puerto->sucesosDeLinea(), IsEmpty());
}

TEST(CambiosDeCuentas, EachCounterThatMovedIsOneEvent) {
    const serial_icounter_struct antes{};
    EXPECT_THAT(cambiosDeCuentas(antes, antes), IsEmpty());
    serial_icounter_struct ahora{};
    ahora.frame = 7;
    EXPECT_THAT(cambiosDeCuentas(antes, ahora), ElementsAre(1004));
    ahora = {};
    ahora.cts = ahora.dsr = ahora.rng = ahora.dcd = 1;
    ahora.frame = ahora.overrun = ahora.parity = ahora.brk = ahora.buf_overrun = 2;
    ahora.rx = ahora.tx = 1000;
    EXPECT_THAT(cambiosDeCuentas(antes, ahora), ElementsAre(1001, 1004, 1009, 1006, 1008, 3, 4, 5, 6));
    EXPECT_THAT(cambiosDeCuentas(ahora, ahora), IsEmpty());
}

TEST(CambiosDeLineas, EveryChangeCountsButTheBellOnlyWhenItStarts) {
    EXPECT_THAT(cambiosDeLineas(0, 0), IsEmpty());
    EXPECT_THAT(cambiosDeLineas(0, TIOCM_CTS | TIOCM_DSR | TIOCM_CD | TIOCM_RI), ElementsAre(3, 4, 5, 6));
    EXPECT_THAT(cambiosDeLineas(TIOCM_CTS | TIOCM_RI, 0), ElementsAre(3));
    EXPECT_THAT(cambiosDeLineas(0, TIOCM_DTR | TIOCM_RTS), IsEmpty());
}

TEST(PuertosSistema, ANumberExistsWhileItsDeviceIsThere) {
    PtyPrueba pty;
    BuclePosix bucle;
    PuertosSistema puertos(bucle, MapaCom::fijo({"3=" + pty.ruta().string(), "4=/dev/no-such-port"}));
    EXPECT_TRUE(puertos.existe(3));
    EXPECT_FALSE(puertos.existe(4));
    EXPECT_FALSE(puertos.existe(1));
    EXPECT_NE(puertos.abrir(3, AjustesLinea(), [] {}), nullptr);
    EXPECT_THROW(puertos.abrir(4, AjustesLinea(), [] {}), ErrorPuerto);
    EXPECT_THROW(puertos.abrir(1, AjustesLinea(), [] {}), ErrorPuerto);
}

TEST(PuertosSistema, AChannelRunsOverARealLine) {
    PtyPrueba pty;
    BuclePosix bucle;
    PuertosSistema puertos(bucle, MapaCom::fijo({"1=" + pty.ruta().string()}));
    Tenencia tenencia;
    MSComm canal(puertos, tenencia);
    std::vector<int> sucesos;
    canal.CommPort(1);
    canal.Settings("19200,n,8,1");
    canal.InputLen(1);
    canal.RThreshold(21);
    canal.alComunicar = [&] { sucesos.push_back(canal.CommEvent()); };
    canal.PortOpen(true);
    canal.Output(std::uint8_t{0xBE});
    EXPECT_THAT(pty.recibir(1), ElementsAre(0xBE));
    pty.enviar(std::string(20, 'a'));
    EXPECT_FALSE(bucle.correrHasta([&] { return !sucesos.empty(); }, kSilencio));
    pty.enviar("b");
    EXPECT_TRUE(bucle.correrHasta([&] { return !sucesos.empty(); }, kPaciencia));
    EXPECT_THAT(sucesos, ElementsAre(suceso::kRecibido));
    EXPECT_EQ(canal.InBufferCount(), 21U);
}

}  // namespace
}  // namespace telvane
