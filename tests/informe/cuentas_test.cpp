#include "informe/cuentas.h"

#include <numeric>

#include <gtest/gtest.h>

#include "data/columnas.h"
#include "tests/informe/juzgadas.h"

namespace telvane::informe {
namespace {

using namespace std::chrono_literals;

TEST(Rumbo, EachByteWithANameStandsWhereItsNameSays) {
    int conNombre = 0;
    for (unsigned crudo = 0; crudo < 256; ++crudo) {
        const auto nombre = columnas::nombreViento(crudo);
        if (nombre == "---") continue;
        ++conNombre;
        const auto rumbo = rumboDe(static_cast<std::uint8_t>(crudo));
        ASSERT_TRUE(rumbo) << crudo;
        EXPECT_EQ(kNombresRumbo[*rumbo], nombre) << crudo;
        EXPECT_EQ(gradosDesdeElNorte(static_cast<std::uint8_t>(crudo)), static_cast<double>(*rumbo) * 22.5);
    }
    EXPECT_EQ(conNombre, 16);
}

TEST(Rumbo, ARecordBetweenTwoNamesBelongsToTheSectorThatTheRuleSays) {
    for (unsigned crudo = 1; crudo <= 160; ++crudo) {
        const unsigned sector = (crudo + 5) / 10 % 16;  // counter-clockwise from north
        EXPECT_EQ(rumboDe(static_cast<std::uint8_t>(crudo)), (16 - sector) % 16) << crudo;
    }
    EXPECT_EQ(rumboDe(0), std::nullopt);
    for (unsigned crudo = 161; crudo < 256; ++crudo)
        EXPECT_EQ(rumboDe(static_cast<std::uint8_t>(crudo)), std::nullopt);
}

TEST(Rosa, SectorsCalmsAndTheNamelessAddUpToTheSamples) {
    std::vector<Observacion> todas;
    for (int i = 0; i < 2000; ++i) {
        auto m = buenas(i);
        m.crudoDirViento = static_cast<std::uint8_t>(i * 7 % 256);
        m.velViento = i * 13 % 50;
        todas.push_back({.instante = kInicio + i * 10min, .medidas = m});
    }
    const auto informe = informeDe(todas);
    const auto& c = informe.estadistica.todo();
    const auto enRumbos = std::accumulate(c.rumbos.begin(), c.rumbos.end(), 0U);
    EXPECT_EQ(enRumbos + c.calmas + c.sinRumbo, 2000U);
    EXPECT_GT(c.calmas, 0U);
    EXPECT_GT(c.sinRumbo, 0U);
    std::uint32_t enRosa = 0;
    for (const auto& rumbo : informe.estadistica.rosa())
        enRosa += std::accumulate(rumbo.begin(), rumbo.end(), 0U);
    EXPECT_EQ(enRosa, enRumbos);
}

TEST(Rosa, WindBeginsAtTheThreshold) {
    auto dos = serie(2);
    dos[0].medidas.velViento = 17;
    dos[1].medidas.velViento = 18;
    EXPECT_EQ(informeDe(dos).estadistica.todo().calmas, 1U);
    EXPECT_EQ(claseDe(18), 0U);
    EXPECT_EQ(claseDe(99), 0U);
    EXPECT_EQ(claseDe(100), 1U);
    EXPECT_EQ(claseDe(399), 2U);
    EXPECT_EQ(claseDe(400), 3U);
}

TEST(Cuentas, TheMeanDirectionIsThatOfTheVectors) {
    // Around north, where the mean of the degrees would be south.
    auto dos = serie(2);
    dos[0].medidas.crudoDirViento = 10;   // NNO
    dos[1].medidas.crudoDirViento = 150;  // NNE
    dos[0].medidas.velViento = dos[1].medidas.velViento = 100;
    EXPECT_NEAR(*informeDe(dos).estadistica.todo().direccionMedia(), 0.0, 0.01);
    dos[1].medidas.velViento = 10'000;
    EXPECT_NEAR(*informeDe(dos).estadistica.todo().direccionMedia(), 337.5, 0.1)
        << "a value out of range has no say";
    dos[1].medidas.velViento = 900;
    EXPECT_NEAR(*informeDe(dos).estadistica.todo().direccionMedia(), 18.3, 0.2)
        << "the stronger wind weighs more";
}

TEST(Cuentas, ASpeedOutOfRangeIsCountedWhereItSaysAndWeighsNothing) {
    auto tres = serie(3);
    tres[0].medidas.crudoDirViento = 80;
    tres[1].medidas.crudoDirViento = tres[2].medidas.crudoDirViento = 40;
    tres[1].medidas.velViento = tres[2].medidas.velViento = 5000;
    const auto informe = informeDe(tres);
    const auto& c = informe.estadistica.todo();
    EXPECT_EQ(kNombresRumbo[*c.rumboDominante()], "O") << "the sector that the rose shows";
    EXPECT_EQ(informe.estadistica.rosa()[*c.rumboDominante()][kClases - 1], 2U);
    EXPECT_NEAR(*c.direccionMedia(), 180.0, 0.01);
    EXPECT_EQ(c[Canal::velViento].valores, 1U);
}

TEST(Cuentas, AStampIsExpectedOnceHoweverManyRecordsOfItCount) {
    auto todas = serie(20);
    todas.insert(todas.begin() + 10, todas[10]);
    todas[10].conflicto = todas[11].conflicto = true;
    const auto c = informeDe(todas).estadistica.todo();
    EXPECT_EQ(c.muestras, 21U);
    EXPECT_EQ(c.sellos, 20U);
    EXPECT_EQ(c.esperadas(), 20U);
    EXPECT_EQ(c.conflictos, 1U);
}

TEST(Cuentas, RangoStaysOutAndSaltoAndFijoEnter) {
    auto todas = serie(100);
    todas[50].medidas.temperatura = 900;  // no such weather
    todas[70].medidas.temperatura = 400;  // a jump
    todas[80].medidas.lluvia = 200;
    todas[81].medidas.lluvia = 10;
    const auto c = informeDe(todas).estadistica.todo();
    EXPECT_EQ(c[Canal::temperatura].maximo, 400);
    EXPECT_EQ(c[Canal::temperatura].valores, 99U);
    EXPECT_EQ(c[Canal::temperatura].fueraDeRango(), 1U);
    EXPECT_EQ(c[Canal::lluvia].suma, 10);
    EXPECT_TRUE(c.conAgujeros(Canal::lluvia));
    EXPECT_FALSE(c.conAgujeros(Canal::evaporacion));
    EXPECT_EQ(c.marcadas, 5U) << "the value and the way back, the jump and the way back, the rain";
}

TEST(Cuentas, AnExtremeIsMarkedThatIsAJumpItself) {
    auto todas = serie(100);
    todas[70].medidas.temperatura = 400;  // a jump
    const auto c = informeDe(todas).estadistica.todo()[Canal::temperatura];
    EXPECT_TRUE(c.conMarcados());
    EXPECT_TRUE(c.maximoMarcado);
    EXPECT_FALSE(c.minimoMarcado);
}

TEST(Cuentas, AJumpThatStaysOutForItsRangeMarksNoMean) {
    auto todas = serie(100);
    todas.back().medidas.temperatura = 900;
    const auto informe = informeDe(todas);
    const auto c = informe.estadistica.todo()[Canal::temperatura];
    EXPECT_EQ(c.marcados[static_cast<std::size_t>(Marca::salto)], 1U);
    EXPECT_EQ(c.fueraDeRango(), 1U);
    EXPECT_EQ(c.valores, 99U);
    EXPECT_FALSE(c.conMarcados());
}

TEST(Cuentas, OfEqualExtremesTheFirstCounts) {
    auto todas = serie(10);
    todas[3].medidas.temperatura = todas[7].medidas.temperatura = 250;
    todas[4].medidas.temperatura = todas[8].medidas.temperatura = 170;
    const auto c = informeDe(todas).estadistica.todo();
    EXPECT_EQ(c[Canal::temperatura].cuandoMaximo, kInicio + 30min);
    EXPECT_EQ(c[Canal::temperatura].cuandoMinimo, kInicio + 40min);
}

}  // namespace
}  // namespace telvane::informe
