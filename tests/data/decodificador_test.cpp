#include "data/decodificador.h"

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "loggerconfig/datos_config.h"
#include "regional/formatos.h"
#include "tests/data/registro_prueba.h"

namespace telvane {
namespace {

// A line of the default record with this stamp; empty if the stamp is bad.
std::string fechaYHora(const Sello& sello, Perfil perfil = Perfil::estricto) {
    const auto linea = lineaDe({.sello = sello}, perfil);
    return linea.substr(0, linea.empty() ? 0 : 19);
}

TEST(Linea, HasTenColumnsAndEndsInCrLf) {
    EXPECT_EQ(lineaDe({.humedad = 700,
                       .temperatura = 590,
                       .viento = 40,
                       .velViento = 190,
                       .radSolar = 320,
                       .presion = 14,
                       .lluvia = 3}),
              "20/11/2018,17:04:09,64,21.5,90,O,13,0.85,100.7,0.6\r\n");
}

TEST(Linea, TheEvaporationVariantAddsTheEleventh) {
    auto decodificador = decodificadorEnMarcha();
    decodificador.evaporacion(true);
    EXPECT_EQ(darRegistro(decodificador, 0, {.evaporacion = 125}),
              "20/11/2018,17:04:09,0,0,0,---,0,0,88.1,0,1.25\r\n");
}

TEST(Linea, TemperatureOfAVoltAndAHalfAndWindOfHalfAVoltAreZero) {
    EXPECT_EQ(lineaDe({.temperatura = 375, .velViento = 125}),
              "20/11/2018,17:04:09,0,0,0,---,0,0,88.1,0\r\n");
}

TEST(Linea, TheLongestValuesFitIntoTheLine) {
    auto decodificador = decodificadorEnMarcha();
    decodificador.evaporacion(true);
    EXPECT_EQ(darRegistro(decodificador, 0,
                          {.humedad = 65535,
                           .temperatura = 65534,
                           .viento = 255,
                           .velViento = 65534,
                           .radSolar = 65535,
                           .presion = 65535,
                           .lluvia = 254,
                           .evaporacion = 65535}),
              "20/11/2018,17:04:09,8428,6515.9,573.8,---,13081.8,174.32,59004.1,50.8,655.35\r\n");
}

TEST(Evaporacion, WithoutTheVariantItsFieldsKeepWhatTheyHad) {
    auto decodificador = decodificadorEnMarcha();
    decodificador.evaporacion(true);
    darRegistro(decodificador, 0, {.auxiliar2 = 150, .evaporacion = 125});
    decodificador.evaporacion(false);
    darRegistro(decodificador, 1, {.auxiliar2 = 999, .evaporacion = 999});
    EXPECT_EQ(decodificador.muestra().auxiliar2, 1.5f);
    EXPECT_EQ(decodificador.muestra().evaporacion, 1.25f);
}

TEST(Evaporacion, WithoutTheVariantItsFieldsAreZeroFromTheStart) {
    Decodificador decodificador;
    darRegistro(decodificador, 0, {.auxiliar2 = 150, .evaporacion = 125});
    EXPECT_EQ(decodificador.muestra().auxiliar2, 0.0f);
    EXPECT_EQ(decodificador.muestra().evaporacion, 0.0f);
}

// Bounds of each byte of the stamp in the strict profile, nibble by nibble.
struct Cota {
    std::size_t lugar;
    unsigned decenas;
    bool admiteCero;
};

class SelloEstricto : public ::testing::TestWithParam<Cota> {};

TEST_P(SelloEstricto, TakesExactlyTheNibblesBelowTheirBound) {
    for (unsigned byte = 0; byte < 256; ++byte) {
        Sello sello = kSelloBueno;
        sello[GetParam().lugar] = static_cast<std::uint8_t>(byte);
        const bool bueno =
            byte % 16 < 10 && byte / 16 < GetParam().decenas && (byte != 0 || GetParam().admiteCero);
        EXPECT_EQ(!lineaDe({.sello = sello}).empty(), bueno) << byte;
    }
}

INSTANTIATE_TEST_SUITE_P(cadaByte, SelloEstricto,
                         ::testing::Values(Cota{0, 3, true}, Cota{1, 6, true}, Cota{2, 6, true},
                                           Cota{3, 4, false}, Cota{4, 2, false}, Cota{5, 2, false}));

TEST(SelloEstricto, YearZeroIsBad19Is2019And20IsBad) {
    EXPECT_EQ(fechaYHora({0, 0, 0, 0x01, 0x01, 0x00}), "");
    EXPECT_EQ(fechaYHora({0, 0, 0, 0x01, 0x01, 0x19}), "01/01/2019,00:00:00");
    EXPECT_EQ(fechaYHora({0, 0, 0, 0x01, 0x01, 0x20}), "");
}

TEST(SelloEstricto, Hours24To29AreShownModulo24OnTheSameDay) {
    EXPECT_EQ(fechaYHora({0x23, 0x59, 0x59, 0x31, 0x12, 0x18}), "31/12/2018,23:59:59");
    EXPECT_EQ(fechaYHora({0x24, 0x00, 0x00, 0x31, 0x12, 0x18}), "31/12/2018,00:00:00");
    EXPECT_EQ(fechaYHora({0x29, 0x59, 0x00, 0x31, 0x12, 0x18}), "31/12/2018,05:59:00");
}

TEST(SelloEstricto, ExcessDaysAndMonthsCarryIntoTheDate) {
    EXPECT_EQ(fechaYHora({0, 0, 0, 0x39, 0x19, 0x13}).substr(0, 10), "08/08/2014");
    EXPECT_EQ(fechaYHora({0, 0, 0, 0x30, 0x02, 0x18}).substr(0, 10), "02/03/2018");
    EXPECT_EQ(fechaYHora({0, 0, 0, 0x29, 0x02, 0x16}).substr(0, 10), "29/02/2016");
    EXPECT_EQ(fechaYHora({0, 0, 0, 0x29, 0x02, 0x18}).substr(0, 10), "01/03/2018");
    EXPECT_EQ(fechaYHora({0, 0, 0, 0x39, 0x19, 0x19}).substr(0, 10), "08/08/2020");
}

TEST(SelloEstricto, EveryGoodDateIsTheCalendarsWithCarry) {
    for (int anio = 1; anio < 20; ++anio) {
        for (int mes = 1; mes < 20; ++mes) {
            for (int dia = 1; dia < 40; ++dia) {
                const auto civil = fechaConAcarreo(2000 + anio, mes, dia);
                EXPECT_EQ(
                    fechaYHora({0, 0, 0, empacarBcd(dia), empacarBcd(mes), empacarBcd(anio)}).substr(0, 10),
                    fechaCorta(civil.anio, civil.mes, civil.dia));
            }
        }
    }
}

TEST(SelloMalo, LeavesTheSampleAtTheFirstOf1980AtZeroHours) {
    auto decodificador = decodificadorEnMarcha();
    darRegistro(decodificador, 0, {.sello = kSelloMalo, .temperatura = 590});
    const auto muestra = decodificador.muestra();
    EXPECT_EQ(muestra.fecha, (Fecha{1980, 1, 1}));
    EXPECT_EQ(muestra.hora, (Hora{0, 0, 0}));
    EXPECT_FALSE(muestra.registroValido);
    EXPECT_EQ(muestra.temperatura, 21.5f) << "the sensors are decoded all the same";
}

TEST(SelloMalo, TheFlagFallsWithTheYearAndComesBackAtTheRecordsEnd) {
    auto decodificador = decodificadorEnMarcha();
    const auto bytes = RegistroPrueba{.sello = kSelloMalo}.bytes();
    for (int i = 0; i < 5; ++i) decodificador.proceso(i, bytes[static_cast<std::size_t>(i)]);
    EXPECT_TRUE(decodificador.registroValido());
    decodificador.proceso(5, bytes[5]);
    EXPECT_FALSE(decodificador.registroValido());
    for (int i = 6; i < 31; ++i) decodificador.proceso(i, bytes[static_cast<std::size_t>(i)]);
    EXPECT_FALSE(decodificador.registroValido());
    decodificador.proceso(31, bytes[31]);
    EXPECT_TRUE(decodificador.registroValido());
}

TEST(Bloque, ABadSecondRecordTakesTheFirstsLineAlong) {
    auto decodificador = decodificadorEnMarcha();
    EXPECT_NE(darRegistro(decodificador, 0, {}), "");
    EXPECT_EQ(darRegistro(decodificador, 1, {.sello = kSelloMalo}), "");
}

TEST(Bloque, ABadFirstRecordLeavesTheSecond) {
    auto decodificador = decodificadorEnMarcha();
    EXPECT_EQ(darRegistro(decodificador, 0, {.sello = kSelloMalo}), "");
    EXPECT_EQ(darRegistro(decodificador, 1, {}), lineaDe({}));
}

TEST(Bloque, TwoGoodRecordsGiveTwoLinesInTheirOrder) {
    auto decodificador = decodificadorEnMarcha();
    darRegistro(decodificador, 0, {.lluvia = 5});
    EXPECT_EQ(darRegistro(decodificador, 1, {.lluvia = 10}),
              lineaDe({.lluvia = 5}) + lineaDe({.lluvia = 10}));
}

// Its lines, as the bytes in turn give them, and its records at once.
TEST(Bloque, AtOnceItGivesTheRecordsOfItsLines) {
    const RegistroPrueba bueno, malo{.sello = kSelloMalo};
    for (const auto perfil : {Perfil::estricto, Perfil::ampliado}) {
        for (unsigned caso = 0; caso < 8; ++caso) {
            const bool enMarcha = (caso & 1) != 0, primero = (caso & 2) != 0, segundo = (caso & 4) != 0;
            auto porBytes = enMarcha ? decodificadorEnMarcha(perfil) : Decodificador(perfil);
            auto deUnaVez = porBytes;
            darRegistro(porBytes, 0, primero ? bueno : malo);
            const auto lineas = darRegistro(porBytes, 1, segundo ? bueno : malo);

            std::array<std::uint8_t, kBytesBloque> bloque{};
            std::ranges::copy((primero ? bueno : malo).bytes(), bloque.begin());
            std::ranges::copy((segundo ? bueno : malo).bytes(), bloque.begin() + registro_muestra::kBytes);
            const auto buenos = deUnaVez.procesoBloque(bloque);
            EXPECT_EQ(buenos.cuantos(), std::ranges::count(lineas, '\n')) << caso;
            EXPECT_EQ(buenos.segundo, segundo) << caso;
            EXPECT_EQ(deUnaVez.registroValido(), porBytes.registroValido()) << caso;
        }
    }
}

TEST(Arranque, TheFirstRecordIsNeverWritten) {
    Decodificador decodificador;
    EXPECT_FALSE(decodificador.registroValido());
    EXPECT_EQ(darRegistro(decodificador, 0, {}), "");
    EXPECT_FALSE(decodificador.muestra().registroValido);
    EXPECT_TRUE(decodificador.registroValido());
    EXPECT_NE(darRegistro(decodificador, 1, {}), "");
}

TEST(Arranque, TheSampleBeforeTheFirstRecordIsAtZero) {
    const auto muestra = Decodificador().muestra();
    EXPECT_EQ(muestra.humedad, 0.0f);
    EXPECT_EQ(muestra.fecha, (Fecha{1980, 1, 1}));
    EXPECT_FALSE(muestra.registroValido);
}

TEST(Posicion, Outside0To63NothingIsDecoded) {
    auto decodificador = decodificadorEnMarcha();
    for (const int posicion : {-1, 64, 95, 1 << 30, -(1 << 30)}) {
        EXPECT_FALSE(decodificador.proceso(posicion, 0x55)) << posicion;
    }
    EXPECT_EQ(decodificador.lineaMuestras, "");
    EXPECT_TRUE(decodificador.proceso(0, 0));
    EXPECT_TRUE(decodificador.proceso(63, 0));
}

TEST(MemoriaBorrada, GivesNoLinesInEitherProfile) {
    for (const auto perfil : {Perfil::estricto, Perfil::ampliado}) {
        EXPECT_EQ(fechaYHora(kSelloBorrado, perfil), "");
        EXPECT_EQ(fechaYHora(Sello{}, perfil), "");
    }
}

TEST(PerfilAmpliado, TakesTheYears2000To2099) {
    EXPECT_EQ(fechaYHora({0x12, 0, 0, 0x01, 0x02, 0x00}, Perfil::ampliado), "01/02/2000,12:00:00");
    EXPECT_EQ(fechaYHora({0x12, 0, 0, 0x01, 0x02, 0x26}, Perfil::ampliado), "01/02/2026,12:00:00");
    EXPECT_EQ(fechaYHora({0x12, 0, 0, 0x01, 0x02, 0x99}, Perfil::ampliado), "01/02/2099,12:00:00");
    EXPECT_EQ(fechaYHora({0x12, 0, 0, 0x01, 0x02, 0x9A}, Perfil::ampliado), "");
    EXPECT_EQ(fechaYHora({0x12, 0, 0, 0x01, 0x02, 0xA0}, Perfil::ampliado), "");
}

TEST(PerfilAmpliado, TakesExactlyTheRealDates) {
    for (unsigned anio = 0; anio < 256; ++anio) {
        for (unsigned mes = 0; mes < 256; ++mes) {
            for (const unsigned dia :
                 {0x00u, 0x01u, 0x0Au, 0x1Fu, 0x28u, 0x29u, 0x30u, 0x31u, 0x32u, 0x40u, 0x80u}) {
                const auto decimal = [](unsigned b) { return b % 16 < 10 && b / 16 < 10; };
                const auto valor = [](unsigned b) { return static_cast<int>(b / 16 * 10 + b % 16); };
                bool real = decimal(anio) && decimal(mes) && decimal(dia) && valor(mes) >= 1 &&
                            valor(mes) <= 12 && valor(dia) >= 1;
                if (real) {
                    const Fecha fecha{2000 + valor(anio), valor(mes), valor(dia)};
                    real = fechaConAcarreo(fecha.anio, fecha.mes, fecha.dia) == fecha;
                }
                auto registro =
                    RegistroPrueba{.sello = {0, 0, 0, static_cast<std::uint8_t>(dia),
                                             static_cast<std::uint8_t>(mes), static_cast<std::uint8_t>(anio)}}
                        .bytes();
                ASSERT_EQ(sello::bueno(registro, Perfil::ampliado), real) << anio << "-" << mes << "-" << dia;
            }
        }
    }
}

TEST(PerfilAmpliado, TakesExactlyTheRealTimes) {
    for (std::size_t lugar = 0; lugar < 3; ++lugar) {
        for (unsigned byte = 0; byte < 256; ++byte) {
            Sello sello = kSelloBueno;
            sello[lugar] = static_cast<std::uint8_t>(byte);
            const bool real = byte % 16 < 10 && byte < (lugar == 0 ? 0x24u : 0x60u);
            EXPECT_EQ(!lineaDe({.sello = sello}, Perfil::ampliado).empty(), real) << lugar << " " << byte;
        }
    }
}

TEST(PerfilAmpliado, AGoodFirstRecordStaysAlthoughTheSecondIsBad) {
    auto decodificador = decodificadorEnMarcha(Perfil::ampliado);
    darRegistro(decodificador, 0, {});
    EXPECT_EQ(darRegistro(decodificador, 1, {.sello = kSelloMalo}), lineaDe({}));
}

TEST(Recuento, BeginsAtZero) {
    const Recuento r;
    EXPECT_EQ(r.escritas + r.vacias + r.descartadas + r.valenAmpliado, 0u);
}

TEST(Recuento, ItsTextTellsOneFromMany) {
    EXPECT_EQ((Recuento{8178, 0, 0}).texto(),
              "8178 muestras escritas, 0 registros vacios, 0 descartados por fecha u hora incorrecta");
    EXPECT_EQ((Recuento{1, 1, 1}).texto(),
              "1 muestra escrita, 1 registro vacio, 1 descartado por fecha u hora incorrecta");
}

TEST(Recuento, NamesTheOptionWhenMostWouldHoldWithIt) {
    EXPECT_EQ((Recuento{0, 2, 8178, 8178}).texto(),
              "0 muestras escritas, 2 registros vacios, 8178 descartados por fecha u hora incorrecta (8178 "
              "valen con "
              "--perfil ampliado)");
    EXPECT_EQ((Recuento{3, 0, 1, 1}).texto(),
              "3 muestras escritas, 0 registros vacios, 1 descartado por fecha u hora incorrecta (1 vale con "
              "--perfil ampliado)");
    const auto nombrada = [](std::uint32_t descartadas, std::uint32_t valen) {
        return Recuento{0, 0, descartadas, valen}.texto().find("ampliado") != std::string::npos;
    };
    EXPECT_TRUE(nombrada(10, 6));
    EXPECT_FALSE(nombrada(10, 5)) << "half is not most";
    EXPECT_TRUE(nombrada(3, 2));
    EXPECT_FALSE(nombrada(3, 1));
    EXPECT_FALSE(nombrada(0, 0));
}

}  // namespace
}  // namespace telvane
