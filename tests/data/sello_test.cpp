// The stamp at the head of a record, by itself.
#include "data/sello.h"

#include <array>
#include <string>

#include <fmt/format.h>
#include <gtest/gtest.h>

namespace telvane {
namespace {

// A record with this stamp, and nothing but ones behind it.
BytesMuestra con(unsigned hora, unsigned minuto, unsigned segundo, unsigned dia, unsigned mes,
                 unsigned anio) {
    BytesMuestra bytes;
    bytes.fill(0xFF);
    const std::array<unsigned, 6> sello = {hora, minuto, segundo, dia, mes, anio};
    std::transform(sello.begin(), sello.end(), bytes.begin(),
                   [](unsigned byte) { return static_cast<std::uint8_t>(byte); });
    return bytes;
}

unsigned bcd(int numero) {
    return static_cast<unsigned>(numero / 10 * 16 + numero % 10);
}

std::string escrito(const BytesMuestra& bytes) {
    std::array<char, 64> sitio{};
    return {sitio.data(), sello::escribir(sitio.data(), bytes)};
}

int diasDe(int mes, int anio) {
    constexpr std::array<int, 12> kDias = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return mes == 2 && anio % 4 == 0 ? 29 : kDias[static_cast<std::size_t>(mes - 1)];
}

TEST(Registro, ItsFieldsStandWhereTheLoggerPutsThem) {
    using namespace registro_muestra;
    EXPECT_EQ((std::array{kHora, kDia, kMes, kAnio, kAuxiliar1, kHumedad, kTemperatura, kDirViento}),
              (std::array{0u, 3u, 4u, 5u, 6u, 8u, 10u, 12u}));
    EXPECT_EQ((std::array{kVelViento, kRadSolar, kPresion, kLluvia, kAuxiliar2, kEvaporacion, kBytes}),
              (std::array{13u, 15u, 17u, 19u, 21u, 23u, 32u}));
}

TEST(Perfil, HasTwoNames) {
    EXPECT_EQ(motivoPerfil("estricto"), "");
    EXPECT_EQ(motivoPerfil("ampliado"), "");
    EXPECT_EQ(motivoPerfil("otro"), "debe ser estricto o ampliado");
    EXPECT_EQ(leerPerfil("estricto"), Perfil::estricto);
    EXPECT_EQ(leerPerfil("ampliado"), Perfil::ampliado);
}

// Every byte at every place of a stamp that is good, in which the others are at their ends.
TEST(SelloBueno, EachByteHasItsBoundsInTheStrictProfile) {
    constexpr std::array<unsigned, 6> kDecenas = {3, 6, 6, 4, 2, 2};
    for (const auto& otros : {con(0x29, 0x59, 0x59, 0x39, 0x19, 0x19), con(0, 0, 0, 1, 1, 1)}) {
        for (std::size_t lugar = 0; lugar < 6; ++lugar) {
            for (unsigned byte = 0; byte < 256; ++byte) {
                auto bytes = otros;
                bytes[lugar] = static_cast<std::uint8_t>(byte);
                const bool bueno = byte % 16 < 10 && byte / 16 < kDecenas[lugar] && (lugar < 3 || byte != 0);
                EXPECT_EQ(sello::bueno(bytes, Perfil::estricto), bueno) << lugar << ": " << byte;
            }
        }
    }
}

TEST(SelloBueno, EachByteHasItsBoundsInTheExtendedProfile) {
    constexpr std::array<unsigned, 6> kCotas = {0x24, 0x60, 0x60, 0x32, 0x13, 0xA0};
    for (const auto& otros : {con(0x23, 0x59, 0x59, 0x31, 0x12, 0x99), con(0, 0, 0, 1, 1, 0)}) {
        for (std::size_t lugar = 0; lugar < 6; ++lugar) {
            for (unsigned byte = 0; byte < 256; ++byte) {
                if (lugar == 4 && otros[3] == 0x31) continue;  // the months have their days below
                auto bytes = otros;
                bytes[lugar] = static_cast<std::uint8_t>(byte);
                const bool cero = byte == 0 && (lugar == 3 || lugar == 4);
                const bool bueno = byte % 16 < 10 && byte < kCotas[lugar] && !cero;
                EXPECT_EQ(sello::bueno(bytes, Perfil::ampliado), bueno) << lugar << ": " << byte;
            }
        }
    }
}

TEST(SelloBueno, TheExtendedProfileKnowsTheDaysOfEveryMonth) {
    for (int anio = 0; anio < 100; ++anio) {
        for (int mes = 1; mes <= 19; ++mes) {
            for (int dia = 1; dia <= 39; ++dia) {
                const bool real = mes <= 12 && dia <= diasDe(mes, anio);
                const auto bytes = con(0, 0, 0, bcd(dia), bcd(mes), bcd(anio));
                ASSERT_EQ(sello::bueno(bytes, Perfil::ampliado), real) << anio << "-" << mes << "-" << dia;
                ASSERT_EQ(sello::fechaReal(bytes), real) << anio << "-" << mes << "-" << dia;
            }
        }
    }
}

TEST(SelloBueno, APairOfBadBytesDoesNotMakeAGoodOne) {
    for (unsigned uno = 0; uno < 256; uno += 5) {
        for (unsigned otro = 0; otro < 256; ++otro) {
            const bool buenos = uno % 16 < 10 && uno / 16 < 6 && otro % 16 < 10 && otro / 16 < 6;
            EXPECT_EQ(sello::bueno(con(0, uno, otro, 1, 1, 1), Perfil::estricto), buenos) << uno << otro;
        }
    }
}

TEST(SelloBorrado, IsAllOnesOrAllZerosWhateverFollows) {
    EXPECT_TRUE(sello::borrado(con(0, 0, 0, 0, 0, 0)));
    auto unos = con(0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF);
    EXPECT_TRUE(sello::borrado(unos));
    std::fill(unos.begin() + 6, unos.end(), std::uint8_t{0});
    EXPECT_TRUE(sello::borrado(unos));
    for (std::size_t lugar = 0; lugar < 6; ++lugar) {
        for (unsigned bit = 0; bit < 8; ++bit) {
            auto uno = con(0, 0, 0, 0, 0, 0);
            uno[lugar] = static_cast<std::uint8_t>(1u << bit);
            EXPECT_FALSE(sello::borrado(uno)) << lugar;
            auto cero = con(0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF);
            cero[lugar] = static_cast<std::uint8_t>(0xFF ^ (1u << bit));
            EXPECT_FALSE(sello::borrado(cero)) << lugar;
        }
    }
}

TEST(SelloEscrito, EveryDateIsTheCalendarsWithWhatIsTooMuchCarriedOn) {
    for (int anio = 0; anio < 100; ++anio) {
        for (int mes = 1; mes < 20; ++mes) {
            for (int dia = 1; dia < 40; ++dia) {
                const auto bytes = con(0, 0, 0, bcd(dia), bcd(mes), bcd(anio));
                const auto civil = fechaConAcarreo(2000 + anio, mes, dia);
                ASSERT_EQ(sello::fecha(bytes), (Fecha{civil.anio, civil.mes, civil.dia}));
                if (civil.anio > 2099) continue;
                ASSERT_EQ(escrito(bytes).substr(0, 11),
                          fmt::format("{:02}/{:02}/{:04},", civil.dia, civil.mes, civil.anio));
            }
        }
    }
}

TEST(SelloEscrito, EveryTimeIsTheDaysWithTheHoursModulo24) {
    for (int hora = 0; hora < 30; ++hora) {
        for (int minuto = 0; minuto < 60; ++minuto) {
            const int segundo = 59 - minuto;
            const auto bytes = con(bcd(hora), bcd(minuto), bcd(segundo), 0x20, 0x11, 0x18);
            EXPECT_EQ(sello::hora(bytes), (Hora{hora % 24, minuto, segundo}));
            EXPECT_EQ(escrito(bytes),
                      fmt::format("20/11/2018,{:02}:{:02}:{:02},", hora % 24, minuto, segundo));
        }
    }
}

TEST(Fecha, OfARecordWithABadStampIsTheFirstOf1980AtMidnight) {
    EXPECT_EQ(Fecha{}, (Fecha{1980, 1, 1}));
    EXPECT_EQ(Hora{}, (Hora{0, 0, 0}));
    EXPECT_EQ(Muestra{}.dirVientoR, "---");
    EXPECT_FALSE(Muestra{}.registroValido);
    const Muestra nada;
    for (const float valor : {nada.auxiliar1, nada.humedad, nada.temperatura, nada.dirViento, nada.velViento,
                              nada.radSolar, nada.presion, nada.lluvia, nada.auxiliar2, nada.evaporacion}) {
        EXPECT_EQ(valor, 0.0f);
    }
}

}  // namespace
}  // namespace telvane
