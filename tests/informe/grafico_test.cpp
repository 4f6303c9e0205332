#include "informe/grafico.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "informe/trazo.h"
#include "tests/informe/juzgadas.h"

namespace telvane::informe {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;
using testing::Not;

TEST(Trazo, IsWrittenInRelativeSteps) {
    Trazo trazo;
    trazo.mover(10, 20);
    trazo.hacia(11, 20);
    trazo.hacia(12, 15);
    trazo.hacia(13, 18);
    trazo.hacia(13, 30);
    trazo.cerrar();
    trazo.punto(12, 22);
    EXPECT_EQ(trazo.texto(), "m10 20h1l1-5 1 3v12zm2 2h0");
}

TEST(Ejes, AreRoundAndHoldTheValues) {
    for (const auto& [minimo, maximo] :
         {std::pair{-375, 572}, {0, 1}, {0, 0}, {908, 909}, {-7, -7}, {0, 100'000}, {13, 100}}) {
        const auto e = escalaPara(minimo, maximo);
        EXPECT_LE(e.desde, minimo);
        EXPECT_GE(e.hasta, maximo);
        EXPECT_GE(e.divisiones(), 2);
        EXPECT_LE(e.divisiones(), 5);
        EXPECT_EQ(e.desde % e.paso, 0);
        EXPECT_EQ(e.lugar(e.hasta, 1500), 0);
        EXPECT_EQ(e.lugar(e.desde, 1500), 1500);
        EXPECT_EQ(e.lugar(e.hasta + 1000, 1500), 0) << "what is beyond stands at the end";
    }
}

TEST(Ejes, WhatNeverMovesRunsThroughTheMiddle) {
    for (const auto valor : {926, -7}) EXPECT_EQ(escalaPara(valor, valor).lugar(valor, 1500), 750) << valor;
    EXPECT_EQ(escalaPara(0, 0).desde, 0) << "rain and wind are measured from nothing";
}

TEST(Ejes, TimesAreFewWhateverThePeriod) {
    for (const auto dura :
         {1h, 24h, 72h, 14 * 24h, 31 * 24h, 70 * 24h, 366 * 24h, 10 * 366 * 24h, 99 * 366 * 24h}) {
        const auto marcas = marcasDeTiempo({.desde = kInicio, .hasta = kInicio + dura});
        EXPECT_GE(marcas.size(), 1U) << dura.count();
        EXPECT_LE(marcas.size(), 16U) << dura.count();
        for (const auto& m : marcas) EXPECT_TRUE(kInicio <= m.momento && m.momento < kInicio + dura);
    }
}

TEST(ColumnasGrafico, NoSpikeGetsLost) {
    auto todas = serie(50'000);
    todas[31'234].medidas.temperatura = 300;
    todas[31'234].medidas.presion = 903;
    const auto informe = informeDe(todas);
    const auto& columnas = informe.columnas.canal(Canal::temperatura);
    EXPECT_EQ(columnas.size(), kColumnas);
    EXPECT_EQ(std::ranges::max_element(columnas, {}, &Columna::maximo)->maximo, 300);
    const auto& presion = informe.columnas.canal(Canal::presion);
    EXPECT_EQ(std::ranges::min_element(presion, {}, &Columna::minimo)->minimo, 903);
}

TEST(ColumnasGrafico, AGapIsAGapAndAnEmptyColumnIsNone) {
    // A day: 144 samples in a thousand columns.
    auto todas = serie(144);
    const auto entera = informeDe(todas);
    const auto& canal = kCanalesInformados[0];
    const auto dibujo = [&](const Informe& i) {
        return graficoDeCanal(canal, i.estadistica, i.columnas, "x");
    };
    EXPECT_TRUE(entera.columnas.vacios().empty());
    EXPECT_THAT(dibujo(entera), Not(HasSubstr("class=\"vacio\"")));
    todas.erase(todas.begin() + 50, todas.begin() + 60);
    const auto rota = informeDe(todas);
    ASSERT_EQ(rota.columnas.vacios().size(), 1U);
    EXPECT_THAT(dibujo(rota), HasSubstr("class=\"vacio\""));
    const auto partes = [](const std::string& svg, std::string_view clase) {
        const auto desde = svg.find(clase);
        const auto trazo = svg.substr(desde, svg.find("/>", desde) - desde);
        return std::ranges::count(trazo, 'm') - std::ranges::count(clase, 'm');
    };
    EXPECT_EQ(partes(dibujo(rota), "class=\"media\""), partes(dibujo(entera), "class=\"media\"") + 1);
}

TEST(ColumnasGrafico, DirectionsAreMergedAndFewHoweverManySamplesThereAre) {
    auto pocas = serie(500);
    EXPECT_EQ(informeDe(pocas).columnas.tramosDeRumbos().size(), 500U);
    auto muchas = serie(200'000, 1min);
    for (std::size_t i = 0; i < muchas.size(); ++i)
        muchas[i].medidas.crudoDirViento = static_cast<std::uint8_t>(1 + i * 7919 % 160);
    const auto tramos = informeDe(muchas).columnas.tramosDeRumbos();
    EXPECT_LE(tramos.size(), 8 * kColumnas);
    for (const auto& tramo : tramos) EXPECT_EQ(tramo.desde % 10, 0U);
}

// A year of one direction a column would be a green wall: the most frequent one stands out, by the name that
// the rose gives it.
TEST(ColumnasGrafico, WhereDirectionsFillTheChartTheMostFrequentOneStandsOut) {
    EXPECT_FALSE(informeDe(serie(500)).columnas.porSectores());
    auto muchas = serie(160'000, 1min);
    for (std::size_t i = 0; i < muchas.size(); ++i) {
        // A thousand columns of 160 samples: every direction once, and the column's own besides.
        const auto propia = static_cast<std::uint8_t>(1 + i / 160 % 160);
        muchas[i].medidas.crudoDirViento = i % 3 == 0 ? propia : static_cast<std::uint8_t>(1 + i * 7 % 160);
    }
    const auto informe = informeDe(muchas);
    ASSERT_TRUE(informe.columnas.porSectores());
    const auto dominantes = informe.columnas.dominantes();
    ASSERT_EQ(dominantes.size(), kColumnas);
    for (const auto& uno : dominantes) {
        if (uno.columna % 160 == 0) continue;  // where two columns' samples meet
        EXPECT_EQ(uno.paso, *rumboDe(static_cast<std::uint8_t>(1 + uno.columna % 160)) * 10) << uno.columna;
    }
    const auto direccion = graficoDeCanal(kCanalesInformados[4], informe.estadistica, informe.columnas, "x");
    EXPECT_THAT(direccion, HasSubstr("class=\"puntos tenues\""));
    EXPECT_THAT(direccion, HasSubstr("class=\"puntos\""));
    EXPECT_THAT(datosDeGraficos(informe.estadistica, informe.columnas, false),
                HasSubstr("\"dominantes\":[0,"));
}

TEST(Grafico, MarkedSamplesAreDrawnEachByItsShape) {
    auto todas = serie(500);
    todas[100].medidas.temperatura = 900;
    todas[200].medidas.temperatura = 400;
    for (std::size_t i = 300; i < 400; ++i) todas[i].medidas.temperatura = 200;
    todas[450].conflicto = true;
    const auto informe = informeDe(todas);
    const auto svg = graficoDeCanal(kCanalesInformados[0], informe.estadistica, informe.columnas, "x");
    for (const auto* clase : {"marca rango", "marca salto", "marca dentro", "marca fijo", "conflicto"})
        EXPECT_THAT(svg, HasSubstr(std::string("class=\"") + clase)) << clase;
}

TEST(Grafico, TheWorstMarkIsDrawnLastAndShowsOnPaper) {
    auto todas = serie(500);
    todas[100].medidas.temperatura = 900;  // a jump as well
    const auto informe = informeDe(todas);
    const auto svg = graficoDeCanal(kCanalesInformados[0], informe.estadistica, informe.columnas, "x");
    const auto rango = svg.find("class=\"marca rango\"");
    ASSERT_NE(rango, std::string::npos);
    EXPECT_GT(rango, svg.find("class=\"marca salto\""));
    EXPECT_THAT(svg.substr(rango, svg.find("/>", rango) - rango), HasSubstr("h0h1"));
}

TEST(Grafico, VeryManyMarksAreDrawnSmall) {
    auto todas = serie(3000);
    const auto svg = [&] {
        const auto informe = informeDe(todas);
        return graficoDeCanal(kCanalesInformados[0], informe.estadistica, informe.columnas, "x");
    };
    for (std::size_t i = 0; i < 300; i += 3) todas[i].medidas.temperatura = 900;
    EXPECT_THAT(svg(), Not(HasSubstr("densa")));
    for (std::size_t i = 0; i < 3000; i += 3) todas[i].medidas.temperatura = 900;
    EXPECT_THAT(svg(), HasSubstr("marca rango densa"));
}

TEST(Grafico, TheScriptsDataTellTheConflicts) {
    auto todas = serie(1000);
    const auto datos = [&] {
        const auto informe = informeDe(todas);
        return datosDeGraficos(informe.estadistica, informe.columnas, false);
    };
    EXPECT_THAT(datos(), HasSubstr("\"conflictos\":[]"));
    todas[0].conflicto = todas[999].conflicto = true;
    EXPECT_THAT(datos(), HasSubstr("\"conflictos\":[0,999]"));
}

TEST(Grafico, LinesOfATableHaveOneScale) {
    const Recorrido recorrido{.minimo = 0, .maximo = 180};
    EXPECT_THAT(lineaMinima({90, 90, 90}, recorrido), HasSubstr("d=\"m0 9h0h3 3\""));
    EXPECT_THAT(lineaMinima({0, 180}, recorrido), HasSubstr("d=\"m0 18h0l3-18\""));
    EXPECT_EQ(lineaMinima({std::nullopt, std::nullopt}, recorrido), "");
    EXPECT_THAT(lineaMinima({5, 5}, {.minimo = 5, .maximo = 5}), HasSubstr("d=\"m0 9"));
}

TEST(Grafico, TheRosesPetalsStandWhereTheirNamesSay) {
    auto todas = serie(100);
    for (auto& o : todas) o.medidas.crudoDirViento = 120;  // E
    const auto informe = informeDe(todas);
    const auto svg = rosaDeVientos(informe.estadistica, "x");
    const auto petalo = svg.substr(svg.find("class=\"clase"));
    double x = 0;
    double y = 0;
    ASSERT_EQ(std::sscanf(petalo.substr(petalo.find("L") + 1).c_str(), "%lf %lf", &x, &y), 2);
    EXPECT_GT(x, 300) << "east is right";
    EXPECT_NEAR(y, 220, 40);
}

}  // namespace
}  // namespace telvane::informe
