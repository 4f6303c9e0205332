#include <fcntl.h>
#include <pty.h>
#include <signal.h>
#include <sys/file.h>

#include <algorithm>
#include <array>

#include <fmt/format.h>

#include "cli/cotejo_lecturas.h"
#include "data/conversion.h"
#include "tests/cli/cli_prueba.h"

namespace telvane {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::UnorderedElementsAre;

class Descargar : public CliPrueba {
   protected:
    std::string imagen() { return comoTexto(puertos.maquina(kPuerto).imagen()); }
    // The logger says this instead, once: from: which byte of the download's answers, the two of the
    // handshake first.
    void unaVez(std::size_t indice, std::function<Efecto(const ByteSaliente&)> efecto) {
        puertos.manipular(kPuerto, [=, hecho = false](const ByteSaliente& saliente) mutable {
            if (hecho || saliente.intercambio != Intercambio::descarga || saliente.indice != indice) {
                return Efecto::pasar(saliente.byte);
            }
            hecho = true;
            return efecto(saliente);
        });
    }
    static std::size_t indiceDe(std::size_t bloque) { return 2 + bloque * kBytesBloque; }
    static Efecto callar(const ByteSaliente&) {
        Efecto efecto;
        efecto.callar = true;
        return efecto;
    }
};

TEST_F(Descargar, TheBaseFileIsTheLoggersMemory) {
    const auto r = correr({"descargar", "--base", carpeta / "a.rgt"});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho) << r.errores;
    EXPECT_EQ(leerTodo(carpeta / "a.rgt"), imagen());
    EXPECT_EQ(imagen().size(), 262144U);
    EXPECT_THAT(nombresEn(carpeta.ruta()), ElementsAre("a.rgt"));
    EXPECT_THAT(r.salida, IsEmpty());
    // No terminal: no bar.
    EXPECT_THAT(r.errores, Not(HasSubstr("\r")));
}

TEST_F(Descargar, TheCsvHoldsTheConfigurationThatWasRead) {
    const auto r = correr({"descargar", "--base", carpeta / "a.rgt", "--csv", carpeta / "a.csv"});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho) << r.errores;
    const auto csv = leerTodo(carpeta / "a.csv");
    EXPECT_THAT(csv, HasSubstr("Nro  : 02080050\r\nUsuario: INTA Estacion Experimental"));
    EXPECT_THAT(csv, HasSubstr(",Eva parcial[mm]\r\n20/11/2018,00:00:00,"));
    EXPECT_THAT(r.errores, HasSubstr("muestras escritas"));
}

TEST_F(Descargar, EitherFileMayGoToTheOutput) {
    EXPECT_EQ(correr({"descargar", "--base", "-"}).salida, imagen());
    const auto csv = correr({"descargar", "--base", carpeta / "a.rgt", "--csv", "-"}).salida;
    EXPECT_THAT(csv, testing::StartsWith(" Equipo Registrador VELTRA"));
}

TEST_F(Descargar, AnOldBaseFileStaysUntilTheNewOneIsWhole) {
    std::ofstream(carpeta / "a.rgt") << "old";
    unaVez(indiceDe(100), callar);
    EXPECT_EQ(correr({"descargar", "--reemplazar", "--base", carpeta / "a.rgt", "--reintentos", "0"}).codigo,
              CodigoSalida::fallo);
    EXPECT_EQ(leerTodo(carpeta / "a.rgt"), "old");
    std::filesystem::permissions(carpeta / "a.rgt", std::filesystem::perms(0640));
    EXPECT_EQ(correr({"descargar", "--reemplazar", "--base", carpeta / "a.rgt"}).codigo, CodigoSalida::hecho);
    EXPECT_TRUE(leerTodo(carpeta / "a.rgt") == imagen());
    EXPECT_EQ(std::filesystem::status(carpeta / "a.rgt").permissions(), std::filesystem::perms(0640));
}

TEST_F(Descargar, ALoggerThatStopsIsNoticedAndWhatCameIsKept) {
    unaVez(indiceDe(100), callar);
    const auto r = correr({"descargar", "--base", carpeta / "a.rgt", "--reintentos", "0", "--espera", "7"});
    EXPECT_EQ(r.codigo, CodigoSalida::fallo);
    EXPECT_EQ(leerTodo(carpeta / "a.rgt.parcial"), imagen().substr(0, 100 * kBytesBloque));
    EXPECT_THAT(nombresEn(carpeta.ruta()), ElementsAre("a.rgt.parcial"));
    EXPECT_THAT(r.errores, HasSubstr("quedan 100 de 4096 bloques"));
    // Two waits of two seconds for the logger to wake, and the silence.
    EXPECT_GE(r.duracion, 11s);
    EXPECT_LT(r.duracion, 13s);
}

// Somebody put it there, and nobody said that it may go.
TEST_F(Descargar, AnEmptyPartThatWasThereStays) {
    const auto parte = carpeta / "a.rgt.parcial";
    std::ofstream(parte) << "";
    for (int vez = 0; vez < 2; ++vez) {
        unaVez(indiceDe(0), callar);
        const auto r = correr({"descargar", "--base", carpeta / "a.rgt", "--reintentos", "0"});
        EXPECT_EQ(r.codigo, CodigoSalida::fallo);
        EXPECT_THAT(r.errores, Not(HasSubstr("parcial")));
        EXPECT_THAT(nombresEn(carpeta.ruta()), ElementsAre("a.rgt.parcial"));
    }
    EXPECT_EQ(correr({"descargar", "--base", carpeta / "a.rgt"}).codigo, CodigoSalida::hecho);
    EXPECT_THAT(nombresEn(carpeta.ruta()), ElementsAre("a.rgt"));
    EXPECT_TRUE(leerTodo(carpeta / "a.rgt") == imagen());
}

TEST_F(Descargar, APartShorterThanABlockIsToldAsThat) {
    for (const auto& [bytes, dicho] : {std::pair(1U, "1 byte"), std::pair(3U, "3 bytes")}) {
        std::ofstream(carpeta / "a.rgt.parcial", std::ios::binary) << imagen().substr(0, bytes);
        unaVez(indiceDe(0), callar);
        const auto r = correr({"descargar", "--base", carpeta / "a.rgt", "--reintentos", "0"});
        EXPECT_EQ(r.codigo, CodigoSalida::fallo);
        const auto corto = fmt::format("menos de un bloque ({})", dicho);
        EXPECT_THAT(r.errores, HasSubstr("a.rgt.parcial conserva " + corto + " de una descarga anterior\n"));
        EXPECT_THAT(r.errores, HasSubstr("a.rgt.parcial queda " + corto + ".\n"));
        EXPECT_EQ(leerTodo(carpeta / "a.rgt.parcial"), imagen().substr(0, bytes));
    }
}

TEST_F(Descargar, AnAttemptThatBreaksOffStartsAgain) {
    unaVez(indiceDe(2000) + 5, callar);
    const auto r = correr({"descargar", "--base", carpeta / "a.rgt"});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho) << r.errores;
    EXPECT_EQ(leerTodo(carpeta / "a.rgt"), imagen());
    EXPECT_THAT(r.errores, HasSubstr("dejó de responder"));
    EXPECT_THAT(r.errores, HasSubstr("reintentos que quedan: 1"));
}

TEST_F(Descargar, ADamagedByteBeforeTheBreakIsFoundInTheOverlap) {
    puertos.manipular(kPuerto, [danado = false, cortado = false](const ByteSaliente& saliente) mutable {
        auto efecto = Efecto::pasar(saliente.byte);
        if (saliente.intercambio != Intercambio::descarga) return efecto;
        if (saliente.indice == indiceDe(500) + 9 && !std::exchange(danado, true)) efecto.bytes[0] ^= 0x10;
        if (saliente.indice == indiceDe(900) && !std::exchange(cortado, true)) efecto.callar = true;
        return efecto;
    });
    const auto r = correr({"descargar", "--base", carpeta / "a.rgt"});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho) << r.errores;
    EXPECT_THAT(r.errores, HasSubstr("el bloque 500 no coincide"));
    EXPECT_EQ(leerTodo(carpeta / "a.rgt"), imagen());
}

TEST_F(Descargar, AShortAttemptDoesNotMakeALongerOneForgotten) {
    puertos.manipular(kPuerto, [danado = false, cortes = 0](const ByteSaliente& saliente) mutable {
        auto efecto = Efecto::pasar(saliente.byte);
        if (saliente.intercambio != Intercambio::descarga) return efecto;
        if (saliente.indice == indiceDe(500) + 9 && !std::exchange(danado, true)) efecto.bytes[0] ^= 0x10;
        const bool corta = saliente.indice == indiceDe(cortes == 0 ? 900 : 100) && cortes < 2;
        if (corta) {
            ++cortes;
            efecto.callar = true;
        }
        return efecto;
    });
    const auto r = correr({"descargar", "--reintentos", "3", "--base", carpeta / "a.rgt"});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho) << r.errores;
    EXPECT_THAT(r.errores, HasSubstr("el bloque 500 no coincide"));
    EXPECT_EQ(leerTodo(carpeta / "a.rgt"), imagen());
}

TEST_F(Descargar, VerifyingReadsTwice) {
    const auto r = correr({"descargar", "--verificar", "--base", carpeta / "a.rgt"});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho) << r.errores;
    EXPECT_THAT(r.errores, HasSubstr("Segunda lectura"));
    EXPECT_GE(puertos.emitidos(kPuerto).size(), 2 * kBytesMemoria);
}

TEST_F(Descargar, VerifyingFindsADamagedByteAndReadsAgain) {
    unaVez(indiceDe(3000) + 1, [](const ByteSaliente& saliente) {
        return Efecto::pasar(static_cast<std::uint8_t>(saliente.byte ^ 1));
    });
    const auto r = correr({"descargar", "--verificar", "--base", carpeta / "a.rgt"});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho) << r.errores;
    EXPECT_THAT(r.errores, HasSubstr("el bloque 3000 no coincide"));
    EXPECT_EQ(leerTodo(carpeta / "a.rgt"), imagen());
}

// Whichever of the readings it was, one more tells which of the two is right.
TEST_F(Descargar, OneDamagedReadingCostsOneMore) {
    for (const int cual : {1, 2}) {
        puertos.manipular(kPuerto, [cual, vez = 0](const ByteSaliente& saliente) mutable {
            const bool esa =
                saliente.intercambio == Intercambio::descarga && saliente.indice == indiceDe(3000) + 1;
            return Efecto::pasar(esa && ++vez == cual ? static_cast<std::uint8_t>(saliente.byte ^ 1U)
                                                      : saliente.byte);
        });
        const auto r = correr(
            {"descargar", "--verificar", "--reintentos", "1", "--reemplazar", "--base", carpeta / "a.rgt"});
        EXPECT_EQ(r.codigo, CodigoSalida::hecho) << cual << r.errores;
        EXPECT_EQ(leerTodo(carpeta / "a.rgt"), imagen());
    }
}

// The parts of the header that a logger may change by itself are no exception, in whichever reading.
TEST_F(Descargar, ADamagedByteOfTheHeadersClockOrBehindItCostsOneMore) {
    for (const std::size_t lugar : {105U, 106U, 107U, 108U, 109U, 110U, 111U, 112U, 131U, 323U, 383U}) {
        for (const int cual : {1, 2}) {
            puertos.manipular(kPuerto, [&, vez = 0](const ByteSaliente& saliente) mutable {
                const bool esa =
                    saliente.intercambio == Intercambio::descarga && saliente.indice == indiceDe(0) + lugar;
                return Efecto::pasar(esa && ++vez == cual ? static_cast<std::uint8_t>(saliente.byte ^ 0x10U)
                                                          : saliente.byte);
            });
            const auto r = correr({"descargar", "--verificar", "--reintentos", "0", "--reemplazar", "--base",
                                   carpeta / "a.rgt"});
            EXPECT_EQ(r.codigo, CodigoSalida::hecho) << lugar << r.errores;
            EXPECT_THAT(r.errores, HasSubstr("no se leyó dos veces igual")) << lugar << "," << cual;
            EXPECT_THAT(r.errores, Not(HasSubstr("cambia de una lectura a otra"))) << lugar << "," << cual;
            EXPECT_EQ(leerTodo(carpeta / "a.rgt"), imagen()) << lugar << "," << cual;
        }
    }
}

TEST_F(Descargar, WhatALoggerChangesThereAtEachReadingIsItsOwn) {
    for (const std::size_t lugar : {105U, 111U, 383U}) {
        puertos.manipular(kPuerto, [&, vez = 0](const ByteSaliente& saliente) mutable {
            const bool esa =
                saliente.intercambio == Intercambio::descarga && saliente.indice == indiceDe(0) + lugar;
            return Efecto::pasar(esa ? static_cast<std::uint8_t>(0x60 + ++vez) : saliente.byte);
        });
        const auto r = correr(
            {"descargar", "--verificar", "--reintentos", "0", "--reemplazar", "--base", carpeta / "a.rgt"});
        EXPECT_EQ(r.codigo, CodigoSalida::hecho) << lugar << r.errores;
        EXPECT_THAT(r.errores, HasSubstr("cambia de una lectura a otra: queda como se leyó la última vez"));
        auto queda = imagen();
        queda[lugar] = 0x63;
        EXPECT_EQ(leerTodo(carpeta / "a.rgt"), queda) << lugar;
    }
}

TEST_F(Descargar, VerifyingALineThatAlwaysDamagesFails) {
    puertos.manipular(kPuerto, [vez = 0](const ByteSaliente& saliente) mutable {
        const bool esa = saliente.intercambio == Intercambio::descarga && saliente.indice == indiceDe(3000);
        return Efecto::pasar(esa ? static_cast<std::uint8_t>(++vez) : saliente.byte);
    });
    const auto r = correr({"descargar", "--verificar", "--reintentos", "1", "--base", carpeta / "a.rgt"});
    EXPECT_EQ(r.codigo, CodigoSalida::fallo);
    // Three readings of which no two agree: none is thrown away.
    EXPECT_THAT(nombresEn(carpeta.ruta()),
                UnorderedElementsAre("a.rgt.parcial", "a.rgt.parcial.anterior", "a.rgt.parcial.2.anterior"));
}

TEST_F(Descargar, ALoggerThatIsNotThereAtTheDownloadIsThree) {
    puertos.manipular(kPuerto, [aperturas = 0](const ByteSaliente& saliente) mutable {
        auto efecto = Efecto::pasar(saliente.byte);
        // The read opens the first exchange, the download the second.
        if (saliente.intercambio == Intercambio::eleccion && ++aperturas > 1) efecto.callar = true;
        return efecto;
    });
    const auto r = correr({"descargar", "--base", carpeta / "a.rgt", "--reintentos", "1"});
    EXPECT_EQ(r.codigo, CodigoSalida::sinRegistrador);
    // Nothing came: no file is left.
    EXPECT_THAT(nombresEn(carpeta.ruta()), IsEmpty());
}

class Interrumpir : public Descargar, public testing::WithParamInterface<int> {};

TEST_P(Interrumpir, AtAnyMomentTheToolEndsAndThePartialFileHoldsWhatCame) {
    PuertosSimulados& p = puertos;
    p.manipular(kPuerto, [](const ByteSaliente& saliente) {
        auto efecto = Efecto::pasar(saliente.byte);
        efecto.demora = 100us;
        return efecto;
    });
    senalTras = {std::chrono::milliseconds(GetParam()), GetParam() % 2 == 0 ? SIGINT : SIGTERM};
    const auto r = correr({"descargar", "--base", carpeta / "a.rgt"});
    EXPECT_EQ(r.codigo, CodigoSalida::interrumpido);
    EXPECT_THAT(r.errores, HasSubstr("interrumpido"));
    EXPECT_LT(r.duracion, std::chrono::milliseconds(GetParam() + 100));
    EXPECT_FALSE(puertos.abierto(kPuerto));
    const auto parcial = leerTodo(carpeta / "a.rgt.parcial");
    EXPECT_EQ(parcial, imagen().substr(0, parcial.size()));
    EXPECT_FALSE(std::filesystem::exists(carpeta / "a.rgt"));
    if (!parcial.empty()) {
        EXPECT_THAT(r.errores, HasSubstr("quedan"));
    } else {
        EXPECT_THAT(nombresEn(carpeta.ruta()), IsEmpty());
    }
}

INSTANTIATE_TEST_SUITE_P(Momentos, Interrumpir,
                         testing::Values(1, 2, 50, 1000, 2001, 2010, 3000, 4010, 4100, 5000, 10001, 20000));

TEST_F(Descargar, WhatAnEarlierRunLeftIsNotLostToAShorterOne) {
    unaVez(indiceDe(2000), callar);
    correr({"descargar", "--base", carpeta / "a.rgt", "--reintentos", "0"});
    unaVez(indiceDe(10), callar);
    const auto r = correr({"descargar", "--base", carpeta / "a.rgt", "--reintentos", "0"});
    EXPECT_EQ(r.codigo, CodigoSalida::fallo);
    EXPECT_THAT(r.errores, HasSubstr("conserva 2000 bloques"));
    EXPECT_EQ(leerTodo(carpeta / "a.rgt.parcial"), imagen().substr(0, 2000 * kBytesBloque));
}

TEST_F(Descargar, APartialFileOfAnotherLoggerIsPutAside) {
    std::ofstream(carpeta / "a.rgt.parcial") << std::string(6400, 'x');
    const auto r = correr({"descargar", "--base", carpeta / "a.rgt"});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho);
    EXPECT_EQ(leerTodo(carpeta / "a.rgt"), imagen());
    EXPECT_EQ(leerTodo(carpeta / "a.rgt.parcial.anterior"), std::string(6400, 'x'));
}

TEST_F(Descargar, APartialFileThatAnotherRunIsWritingIsLeftAlone) {
    const int otro = ::open((carpeta / "a.rgt.parcial").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    ASSERT_EQ(::flock(otro, LOCK_EX), 0);
    const auto r = correr({"descargar", "--base", carpeta / "a.rgt"});
    EXPECT_EQ(r.codigo, CodigoSalida::fallo);
    EXPECT_THAT(r.errores, HasSubstr("en uso"));
    EXPECT_TRUE(puertos.emitidos(kPuerto).empty());
    EXPECT_THAT(nombresEn(carpeta.ruta()), ElementsAre("a.rgt.parcial"));
    ::close(otro);
}

TEST_F(Descargar, AFolderThatIsNotThereIsToldBeforeTheMemoryIsRead) {
    const auto r = correr({"descargar", "--base", carpeta / "no/a.rgt"});
    EXPECT_EQ(r.codigo, CodigoSalida::fallo);
    EXPECT_LT(puertos.emitidos(kPuerto).size(), 1000U);
}

TEST_F(Descargar, OnATerminalABarTellsRateAndRemainingTime) {
    int maestro = -1;
    ASSERT_EQ(::openpty(&maestro, &erroresAjenos.emplace(), nullptr, nullptr, nullptr), 0);
    ASSERT_EQ(::fcntl(maestro, F_SETFL, O_NONBLOCK), 0);
    puertos.manipular(kPuerto, [](const ByteSaliente& saliente) {
        auto efecto = Efecto::pasar(saliente.byte);
        if (saliente.intercambio == Intercambio::descarga && saliente.indice % 64 == 2) efecto.demora = 10ms;
        return efecto;
    });
    EXPECT_EQ(correr({"descargar", "--base", carpeta / "a.rgt", "--reintentos", "0"}).codigo,
              CodigoSalida::hecho);
    std::string todo(100'000, '\0');
    const auto n = ::read(maestro, todo.data(), todo.size());
    ASSERT_GT(n, 0);
    todo.resize(static_cast<std::size_t>(n));
    EXPECT_THAT(todo, HasSubstr("\r"));
    EXPECT_THAT(todo, HasSubstr("/4096 bloques"));
    EXPECT_THAT(todo, HasSubstr("faltan 00:"));
    ::close(maestro);
    ::close(*erroresAjenos);
}

TEST(PrimeraDiferencia, OnlyWhatALoggerDoesNotChangeByItselfCounts) {
    std::vector<std::uint8_t> antes(kBytesMemoria, 0xFF);
    auto ahora = antes;
    EXPECT_EQ(primeraDiferencia(antes, ahora), std::nullopt);
    EXPECT_EQ(primeraDiferencia({}, ahora), std::nullopt);
    const auto conMuestra = [](std::vector<std::uint8_t> imagen, std::size_t lugar) {
        constexpr std::array<std::uint8_t, 8> kComienzo = {0x17, 0x04, 0x09, 0x20, 0x11, 0x26, 0xFF, 0x40};
        std::ranges::copy(kComienzo, imagen.begin() + static_cast<std::ptrdiff_t>(lugar));
        return imagen;
    };
    // A sample where nothing was, and not a byte that only one of the readings has.
    ahora[64 * 100 + 3] = 0x12;
    EXPECT_EQ(primeraDiferencia(antes, ahora), 100U);
    ahora = conMuestra(antes, 64 * 100);
    EXPECT_EQ(primeraDiferencia(antes, ahora), std::nullopt);
    // A sample that changed, or went.
    EXPECT_EQ(primeraDiferencia(ahora, antes), 100U);
    // The header's clock and its reserved bytes.
    ahora = antes;
    ahora[105] = 0x23;
    ahora[383] = 0x01;
    EXPECT_EQ(primeraDiferencia(antes, ahora), std::nullopt);
    // From here on samples can stand.
    for (const std::size_t lugar : {384u, 416u}) {
        const auto muestra = conMuestra(antes, lugar);
        EXPECT_EQ(primeraDiferencia(antes, muestra), std::nullopt);
        EXPECT_EQ(primeraDiferencia(muestra, antes), 6U) << lugar;
        for (const std::size_t byte : {0u, 15u, 16u, 31u}) {
            auto suelto = antes;
            suelto[lugar + byte] = 0x01;
            EXPECT_EQ(primeraDiferencia(antes, suelto), 6U) << lugar + byte;
        }
    }
    ahora[104] = 0x60;
    EXPECT_EQ(primeraDiferencia(antes, ahora), 1U);
    // As far as both reach.
    ahora = antes;
    ahora[64 * 10] = 0;
    std::vector<std::uint8_t> corta(64 * 10, 0xFF);
    EXPECT_EQ(primeraDiferencia(corta, ahora), std::nullopt);
}

TEST(MismaCabecera, TheClockStandsStillOrHasGoneOnByTheTimeBetween) {
    std::vector<std::uint8_t> antes(kBytesMemoria, 0xFF);
    const auto conReloj = [&](std::initializer_list<std::uint8_t> reloj) {
        auto imagen = antes;
        std::ranges::copy(reloj, imagen.begin() + 105);
        return imagen;
    };
    EXPECT_TRUE(mismaCabecera(antes, antes, 150s));
    antes = conReloj({0x23, 0x59, 0x00, 0x31, 0x12, 0x25});
    EXPECT_TRUE(mismaCabecera(antes, antes, 150s));
    EXPECT_TRUE(mismaCabecera(antes, conReloj({0x00, 0x01, 0x30, 0x01, 0x01, 0x26}), 150s));
    EXPECT_TRUE(mismaCabecera(antes, conReloj({0x00, 0x01, 0x35, 0x01, 0x01, 0x26}), 150s));
    EXPECT_FALSE(mismaCabecera(antes, conReloj({0x00, 0x01, 0x36, 0x01, 0x01, 0x26}), 150s));
    EXPECT_FALSE(mismaCabecera(antes, conReloj({0x00, 0x01, 0x30, 0x01, 0x01, 0x27}), 150s));
    EXPECT_FALSE(mismaCabecera(antes, conReloj({0x23, 0x57, 0x00, 0x31, 0x12, 0x25}), 150s));
    EXPECT_FALSE(mismaCabecera(antes, conReloj({0x61, 0x01, 0x30, 0x01, 0x01, 0x26}), 150s));
    for (const std::size_t lugar : {111U, 200U, 383U}) {
        auto otra = antes;
        otra[lugar] = 0xFE;
        EXPECT_FALSE(mismaCabecera(antes, otra, 150s)) << lugar;
    }
    auto muestras = antes;
    muestras[384] = 0x17;
    EXPECT_TRUE(mismaCabecera(antes, muestras, 150s));
}

}  // namespace
}  // namespace telvane
