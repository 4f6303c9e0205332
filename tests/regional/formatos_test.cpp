#include "regional/formatos.h"

#include <array>

#include <gtest/gtest.h>

namespace telvane {
namespace {

using namespace std::chrono_literals;

TEST(FechaCorta, IsDayMonthYearWithZeros) {
    EXPECT_EQ(fechaCorta(2026, 11, 20), "20/11/2026");
    EXPECT_EQ(fechaCorta(FechaHora{2004, 3, 7, 0s}), "07/03/2004");
    EXPECT_EQ(fechaCorta(987, 1, 2), "02/01/0987");
}

TEST(HoraLarga, HasTwentyFourHoursAndZeros) {
    EXPECT_EQ(horaLarga(0s), "00:00:00");
    EXPECT_EQ(horaLarga(17h + 4min + 9s), "17:04:09");
    EXPECT_EQ(horaLarga(86399s), "23:59:59");
}

TEST(HoraLarga, IsTakenModuloOneDay) {
    EXPECT_EQ(horaLarga(86400s), "00:00:00");
    EXPECT_EQ(horaLarga(29h), "05:00:00");
    EXPECT_EQ(horaLarga(-1s), "23:59:59");
}

TEST(HoraLarga, FractionsOfASecondDoNotRound) {
    EXPECT_EQ(horaLarga(FechaHora{2026, 11, 20, 23h + 59min + 59s + 999ms}), "23:59:59");
}

TEST(FechaLarga, NamesDayAndMonthInSpanish) {
    EXPECT_EQ(fechaLarga(FechaHora{2026, 11, 20, 0s}), "viernes, 20 de noviembre de 2026");
    EXPECT_EQ(fechaLarga(FechaHora{1970, 1, 1, 0s}), "jueves, 1 de enero de 1970");
    EXPECT_EQ(fechaLarga(FechaHora{1969, 12, 31, 0s}), "miércoles, 31 de diciembre de 1969");
    EXPECT_EQ(fechaLarga(FechaHora{2000, 2, 29, 0s}), "martes, 29 de febrero de 2000");
}

TEST(FechaLarga, TheSevenDaysFollowEachOther) {
    const std::array<std::string, 7> dias = {"lunes",   "martes", "miércoles", "jueves",
                                             "viernes", "sábado", "domingo"};
    for (int i = 0; i < 70; ++i) {
        const auto fecha = fechaConAcarreo(2023, 12, 4 + i);  // a Monday
        const auto texto = fechaLarga(FechaHora{fecha.anio, fecha.mes, fecha.dia, 0s});
        EXPECT_EQ(texto.substr(0, texto.find(',')), dias[static_cast<std::size_t>(i % 7)]) << i;
    }
}

TEST(FechaLarga, HasTheTwelveMonths) {
    const std::array<std::string, 12> meses = {"enero",      "febrero", "marzo",     "abril",
                                               "mayo",       "junio",   "julio",     "agosto",
                                               "septiembre", "octubre", "noviembre", "diciembre"};
    for (int mes = 1; mes <= 12; ++mes) {
        EXPECT_NE(fechaLarga(FechaHora{2026, mes, 5, 0s})
                      .find(" de " + meses[static_cast<std::size_t>(mes - 1)] + " de 2026"),
                  std::string::npos);
    }
}

TEST(Acarreo, ExcessDaysAndMonthsCarryIntoTheDate) {
    EXPECT_EQ(fechaConAcarreo(2013, 19, 39), (Fecha{2014, 8, 8}));
    EXPECT_EQ(fechaConAcarreo(2019, 12, 32), (Fecha{2020, 1, 1}));
    EXPECT_EQ(fechaConAcarreo(2019, 13, 1), (Fecha{2020, 1, 1}));
    EXPECT_EQ(fechaConAcarreo(2019, 24, 31), (Fecha{2020, 12, 31}));
    EXPECT_EQ(fechaConAcarreo(2019, 2, 29), (Fecha{2019, 3, 1}));
    EXPECT_EQ(fechaConAcarreo(2019, 1, 0), (Fecha{2018, 12, 31}));
    EXPECT_EQ(fechaConAcarreo(2019, 0, 1), (Fecha{2018, 12, 1}));
}

TEST(Acarreo, ExcessAndMissingMonthsAreOfAnotherYear) {
    for (int anio = 1996; anio <= 2005; ++anio) {
        for (int mes = 1; mes <= 12; ++mes) {
            for (int vueltas = -9; vueltas <= 9; ++vueltas) {
                EXPECT_EQ(fechaConAcarreo(anio - vueltas, mes + 12 * vueltas, 28), (Fecha{anio, mes, 28}));
            }
        }
    }
}

TEST(Acarreo, GoesThroughTheCalendarDayByDay) {
    const auto bisiesto = [](int a) { return a % 4 == 0 && (a % 100 != 0 || a % 400 == 0); };
    Fecha esperada{-410, 1, 1};
    for (int n = 0; esperada.anio < 2410; ++n) {
        ASSERT_EQ(fechaConAcarreo(-410, 1, 1 + n), esperada);
        ASSERT_EQ(fechaConAcarreo(esperada.anio, esperada.mes, esperada.dia), esperada);
        const std::array<int, 12> largos = {
            31, bisiesto(esperada.anio) ? 29 : 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
        if (++esperada.dia > largos[static_cast<std::size_t>(esperada.mes - 1)])
            esperada = {esperada.anio, esperada.mes + 1, 1};
        if (esperada.mes > 12) esperada = {esperada.anio + 1, 1, 1};
    }
}

}  // namespace
}  // namespace telvane
