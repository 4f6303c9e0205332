#include "informe/estadistica.h"

#include <gtest/gtest.h>

#include "informe/clima.h"
#include "tests/informe/juzgadas.h"

namespace telvane::informe {
namespace {

using namespace std::chrono_literals;
using std::chrono::days;

TEST(Estadistica, ADayRunsFromMidnightIncludedToMidnightExcluded) {
    const auto informe = informeDe(serie(288));
    const auto& dias = informe.estadistica.dias();
    ASSERT_EQ(dias.size(), 2U);
    EXPECT_EQ(dias[0].cuentas.muestras, 144U);
    EXPECT_EQ(dias[1].cuentas.muestras, 144U);
    EXPECT_EQ(dias[0].cuentas.esperadas(), 144U);
    EXPECT_EQ(dias[1].comienzo, kInicio + days(1));
}

TEST(Estadistica, WhatIsMissingIsCountedOnItsDay) {
    auto todas = serie(432);
    // From 18:00 of the first day to 06:00 of the second.
    todas.erase(todas.begin() + 108, todas.begin() + 180);
    const auto informe = informeDe(todas);
    const auto& dias = informe.estadistica.dias();
    EXPECT_EQ(dias[0].cuentas.faltan, 36U);
    EXPECT_EQ(dias[1].cuentas.faltan, 36U);
    EXPECT_EQ(dias[1].cuentas.huecos, 1U) << "on the day that ends it";
    EXPECT_EQ(dias[2].cuentas.faltan, 0U);
    EXPECT_EQ(informe.estadistica.todo().esperadas(), 432U);
    EXPECT_EQ(informe.estadistica.todo().segundos, 360 * 600);
}

TEST(Estadistica, NoDayHasMoreHoursThanItHas) {
    // Every ten minutes for two days, then every hour: the last ten are judged with the hours that follow.
    auto todas = serie(288, 10min);
    for (const auto& o : serie(48, 1h, kInicio + days(2) + 50min)) todas.push_back(o);
    const auto informe = informeDe(todas);
    const auto& dias = informe.estadistica.dias();
    EXPECT_EQ(dias[1].cuentas.segundos, 24 * 3600);
    EXPECT_EQ(dias[3].cuentas.segundos, 24 * 3600);
}

TEST(Estadistica, APeriodThatIsLongerThanItsSamplesMissesThem) {
    const Plazo plazo{.desde = kInicio - 2h, .hasta = kInicio + 3h};
    const auto c = informeDe(serie(6), plazo).estadistica.todo();
    EXPECT_EQ(c.muestras, 6U);
    EXPECT_EQ(c.esperadas(), 30U);
}

TEST(Estadistica, OnlyThePeriodCounts) {
    const Plazo plazo{.desde = kInicio + 1h, .hasta = kInicio + 2h};
    const auto informe = informeDe(serie(100), plazo);
    EXPECT_EQ(informe.estadistica.todo().muestras, 6U);
    EXPECT_EQ(informe.estadistica.primera(), kInicio + 1h);
    EXPECT_EQ(informe.estadistica.ultima(), kInicio + 110min);
    EXPECT_TRUE(informeDe(serie(100), {.desde = kInicio + days(9), .hasta = kInicio + days(10)}).vacio());
}

TEST(Estadistica, AConflictCountsBothSamplesAndOneStamp) {
    auto todas = serie(20);
    todas.insert(todas.begin() + 5, todas[5]);
    todas[5].conflicto = todas[6].conflicto = true;
    todas[6].medidas.humedad = 80;
    const auto c = informeDe(todas).estadistica.todo();
    EXPECT_EQ(c.muestras, 21U);
    EXPECT_EQ(c.sellos, 20U);
    EXPECT_EQ(c.conflictos, 1U);
    EXPECT_EQ(c[Canal::humedad].maximo, 80);
}

// A November of hourly samples without some of its days.
MesContado noviembreSin(const std::vector<int>& faltan) {
    std::vector<Observacion> todas;
    const Mes noviembre{.anio = 2018, .mes = 11};
    for (const auto& o : serie(30 * 24, 1h, noviembre.plazo().desde)) {
        if (std::ranges::find(faltan, fechaDe(o.instante).dia) == faltan.end()) todas.push_back(o);
    }
    const auto informe = informeDe(todas, noviembre.plazo());
    EXPECT_EQ(informe.estadistica.meses().size(), 1U);
    return informe.estadistica.meses().front();
}

TEST(Estadistica, AnHourMissesWhatItsSamplesDoNotFill) {
    auto todas = serie(100);
    // From 04:10 to 06:00.
    todas.erase(todas.begin() + 25, todas.begin() + 36);
    const auto informe = informeDe(todas);
    const auto& horas = informe.estadistica.horas();
    EXPECT_EQ(horas[3].faltan, 0U);
    EXPECT_EQ(horas[4].faltan, 5U);
    EXPECT_EQ(horas[5].faltan, 6U);
    EXPECT_EQ(horas[6].faltan, 0U);
}

TEST(Estadistica, AMeanOfAPeriodIsIncompleteWhenOneOfItsMonthsIs) {
    const Mes noviembre{.anio = 2018, .mes = 11};
    const auto deNoviembreADiciembreSin = [&](int desde, int hasta) {
        std::vector<Observacion> todas;
        for (const auto& o : serie(61 * 24, 1h, noviembre.plazo().desde)) {
            const auto f = fechaDe(o.instante);
            if (f.mes != 12 || f.dia < desde || f.dia > hasta) todas.push_back(o);
        }
        const Plazo plazo{.desde = noviembre.plazo().desde, .hasta = noviembre.siguiente().plazo().hasta};
        return informeDe(todas, plazo).estadistica.incompleta(Canal::temperatura);
    };
    EXPECT_FALSE(deNoviembreADiciembreSin(10, 12));
    EXPECT_TRUE(deNoviembreADiciembreSin(10, 13));
    // Of a week that has all its samples the mean is whole, though the month's is not.
    const auto semana = informeDe(serie(7 * 144));
    EXPECT_FALSE(semana.estadistica.incompleta(Canal::temperatura));
    EXPECT_TRUE(semana.estadistica.meses().front().incompleta(Canal::temperatura));
}

TEST(Estadistica, AMeanIsIncompleteBeyondThreeDaysInARowOrFiveInAll) {
    const auto incompleta = [](const std::vector<int>& faltan) {
        return noviembreSin(faltan).incompleta(Canal::temperatura);
    };
    EXPECT_FALSE(incompleta({}));
    EXPECT_FALSE(incompleta({10, 11, 12}));
    EXPECT_TRUE(incompleta({10, 11, 12, 13}));
    EXPECT_FALSE(incompleta({2, 5, 8, 11, 14}));
    EXPECT_TRUE(incompleta({2, 5, 8, 11, 14, 17}));
    EXPECT_TRUE(incompleta({27, 28, 29, 30}));
}

TEST(Estadistica, ARainTotalWithAnyHoleSaysSo) {
    EXPECT_FALSE(noviembreSin({}).conAgujeros(Canal::lluvia));
    EXPECT_TRUE(noviembreSin({10}).conAgujeros(Canal::lluvia));
}

TEST(Estadistica, AMonthThatThePeriodCutsIsNotWhole) {
    const Mes noviembre{.anio = 2018, .mes = 11};
    const auto todas = serie(30 * 24, 1h, noviembre.plazo().desde);
    const auto informe =
        informeDe(todas, {.desde = noviembre.plazo().desde + days(5), .hasta = noviembre.plazo().hasta});
    EXPECT_TRUE(informe.estadistica.meses().front().incompleta(Canal::temperatura)) << "the days before it";
    EXPECT_TRUE(informe.estadistica.meses().front().conAgujeros(Canal::lluvia));
}

TEST(Estadistica, AYearEndsWithinASeries) {
    const auto informe = informeDe(serie(48, 1h, instante({.anio = 2018, .mes = 12, .dia = 31})));
    ASSERT_EQ(informe.estadistica.meses().size(), 2U);
    EXPECT_EQ(informe.estadistica.meses()[0].mes, (Mes{2018, 12}));
    EXPECT_EQ(informe.estadistica.meses()[1].mes, (Mes{2019, 1}));
    EXPECT_EQ(informe.estadistica.todo().huecos, 0U);
}

TEST(Clima, CountsTheDaysOfHeatFrostAndRain) {
    const Mes noviembre{.anio = 2018, .mes = 11};
    auto todas = serie(30 * 24, 1h, noviembre.plazo().desde);
    for (auto& o : todas) {
        const auto f = fechaDe(o.instante);
        if (f.dia == 3 && horaDe(o.instante).hora == 12) o.medidas.lluvia = 2;
        if (f.dia == 4 && horaDe(o.instante).hora == 12) o.medidas.lluvia = 200;
        if (f.dia == 5) o.medidas.temperatura = -10 - horaDe(o.instante).hora;
        if (f.dia == 6 && horaDe(o.instante).hora == 15) o.medidas.temperatura = 320;
    }
    const auto informe = informeDe(todas, noviembre.plazo());
    const auto clima = climaDe(informe.estadistica, informe.estadistica.meses().front());
    EXPECT_EQ(clima.dias.size(), 30U);
    EXPECT_EQ(clima.lluviaDesde02, 2);
    EXPECT_EQ(clima.lluviaDesde2, 1);
    EXPECT_EQ(clima.lluviaDesde20, 1);
    EXPECT_EQ(clima.diaMasLluvioso, 4);
    EXPECT_EQ(clima.maximaHasta0, 1);
    EXPECT_EQ(clima.minimaHasta0, 1);
    EXPECT_EQ(clima.maximaDesde32, 1);
    EXPECT_NEAR(*clima.dias[4].calefaccion, 18.3 + 2.15, 0.001);
    EXPECT_EQ(*clima.dias[4].refrigeracion, 0.0);
}

// 20.15 less 18.3 is 1.85, and not the little less that two doubles leave.
TEST(Clima, DegreeDaysAreThoseOfTheDecimalMean) {
    const Mes noviembre{.anio = 2018, .mes = 11};
    auto todas = serie(30 * 24, 1h, noviembre.plazo().desde);
    for (auto& o : todas) o.medidas.temperatura = 201 + horaDe(o.instante).hora % 2;
    const auto informe = informeDe(todas, noviembre.plazo());
    const auto clima = climaDe(informe.estadistica, informe.estadistica.meses().front());
    EXPECT_EQ(*clima.dias[4].refrigeracion, 1.85);
    EXPECT_EQ(*clima.dias[4].calefaccion, 0.0);
}

}  // namespace
}  // namespace telvane::informe
