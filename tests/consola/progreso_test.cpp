// The line that tells how far a work is.
#include "consola/progreso.h"

#include <fcntl.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>

#include "platform/descriptor.h"
#include "tests/consola/consola_prueba.h"

namespace telvane {
namespace {

using namespace std::chrono_literals;

using testing::EndsWith;
using testing::IsEmpty;
using testing::StartsWith;

constexpr std::size_t kTotal = 4096;
constexpr std::string_view kBorrada = "\r\x1b[K";

class LineaDeProgreso : public ConsolaPrueba {
   protected:
    void terminal(unsigned short columnas) {
        tamano_.ws_col = columnas;
        int maestro = -1;
        int esclavo = -1;
        ASSERT_EQ(::openpty(&maestro, &esclavo, nullptr, nullptr, &tamano_), 0);
        maestro_ = Descriptor(maestro);
        esclavo_ = Descriptor(esclavo);
        ASSERT_EQ(::fcntl(maestro, F_SETFL, O_NONBLOCK), 0);
        entorno.errores = esclavo;
    }
    void estrechar(unsigned short columnas) {
        tamano_.ws_col = columnas;
        ASSERT_EQ(::ioctl(maestro_(), TIOCSWINSZ, &tamano_), 0);
    }
    // What was drawn since the last time.
    std::string dibujado() const {
        std::string todo;
        std::array<char, 4096> trozo;
        for (auto n = ::read(maestro_(), trozo.data(), trozo.size()); n > 0;
             n = ::read(maestro_(), trozo.data(), trozo.size()))
            todo.append(trozo.data(), static_cast<std::size_t>(n));
        return todo;
    }

   private:
    winsize tamano_{.ws_row = 24, .ws_col = 80, .ws_xpixel = 0, .ws_ypixel = 0};
    Descriptor maestro_;
    Descriptor esclavo_;
};

class Ancho : public LineaDeProgreso, public testing::WithParamInterface<unsigned short> {};

TEST_P(Ancho, TheLineStaysWithinTheTerminalAlsoWhenThatGetsNarrower) {
    terminal(GetParam());
    Consola consola(entorno);
    Progreso progreso(consola, bucle.reloj(), kTotal, {.nombre = "bloques", .bytes = 64});
    std::size_t cabe = GetParam();
    for (std::size_t hechos = 64; hechos <= kTotal; hechos += 64) {
        if (hechos == kTotal / 2) {
            cabe = std::min<std::size_t>(cabe, 20);
            estrechar(static_cast<unsigned short>(cabe));
        }
        bucle.avanzar(2300ms);
        progreso.avance(hechos);
        const auto linea = dibujado();
        ASSERT_THAT(linea, StartsWith(kBorrada));
        EXPECT_LT(linea.size() - kBorrada.size(), cabe) << linea;
    }
}

INSTANTIATE_TEST_SUITE_P(Columnas, Ancho, testing::Values(2, 8, 20, 40, 60, 79, 80, 81, 132, 300));

TEST_F(LineaDeProgreso, TellsHowMuchHowFastAndHowLongStill) {
    terminal(100);
    Consola consola(entorno);
    Progreso progreso(consola, bucle.reloj(), kTotal, {.nombre = "bloques", .bytes = 64});
    bucle.avanzar(32s);
    progreso.avance(kTotal / 4);
    EXPECT_THAT(dibujado(), EndsWith("[#######.......................]  25 %  1024/4096 bloques  2.0 kB/s  "
                                     "faltan 01:36"));
}

TEST_F(LineaDeProgreso, IsDrawnSeldomAndAtTheEnd) {
    terminal(80);
    Consola consola(entorno);
    Progreso progreso(consola, bucle.reloj(), kTotal, {.nombre = "archivos"});
    bucle.avanzar(100ms);
    progreso.avance(1);
    EXPECT_THAT(dibujado(), IsEmpty());
    bucle.avanzar(100ms);
    progreso.avance(2);
    EXPECT_THAT(dibujado(), Not(IsEmpty()));
    progreso.avance(kTotal);
    EXPECT_THAT(dibujado(), EndsWith("100 %  4096/4096 archivos  faltan 00:00"));
}

TEST_F(LineaDeProgreso, IsTakenAwayBeforeAnythingElseIsSaidAndAtTheEnd) {
    terminal(80);
    {
        Consola consola(entorno);
        consola.progreso("va");
        consola.aviso("hecho");
        EXPECT_EQ(dibujado(), "\r\x1b[Kva\r\x1b[Khecho\r\n");
        consola.progreso("va");
    }
    EXPECT_EQ(dibujado(), "\r\x1b[Kva\r\x1b[K");
}

TEST_F(LineaDeProgreso, IsForTerminalsOnly) {
    Consola consola(entorno);
    Progreso progreso(consola, bucle.reloj(), kTotal, {.nombre = "bloques"});
    bucle.avanzar(1s);
    progreso.avance(kTotal);
    EXPECT_EQ(errores.texto(), "");
}

}  // namespace
}  // namespace telvane
