#include "calidad/marcador.h"

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "data/conversiones.h"

namespace telvane {
namespace {

using namespace std::chrono_literals;
using testing::Each;
using testing::ElementsAre;

const Instante kInicio = instante({.anio = 2018, .mes = 11, .dia = 20});

// Weather without anything doubtful: no two neighbours are equal for long.
Medidas buenas(int i = 0) {
    Medidas m;
    m.humedad = 50 + i % 7;
    m.temperatura = 180 + i % 9 * 7;
    m.dirViento = 900 + i % 5 * 90;
    m.velViento = 100 + i % 6 * 8;
    m.radSolar = 40;
    m.presion = 908 + i % 2;
    return m;
}

std::vector<Observacion> serie(int cuantas, std::chrono::seconds paso = 10min, Instante desde = kInicio) {
    std::vector<Observacion> todas;
    for (int i = 0; i < cuantas; ++i) todas.push_back({.instante = desde + i * paso, .medidas = buenas(i)});
    return todas;
}

std::vector<std::string> marcasDe(const std::vector<Observacion>& observaciones,
                                  const Limites& limites = limitesUsuales()) {
    std::vector<std::string> textos;
    std::vector<Instante> salidas;
    Marcador marcador(limites, [&](const Juzgada& j) {
        textos.push_back(j.marcas.texto());
        salidas.push_back(j.observacion.instante);
    });
    for (const auto& o : observaciones) marcador.agregar(o);
    marcador.terminar();
    EXPECT_EQ(salidas.size(), observaciones.size());
    for (std::size_t i = 0; i < salidas.size(); ++i) EXPECT_EQ(salidas[i], observaciones[i].instante);
    return textos;
}

// What the middle one of 41 samples, changed so, is marked.
std::string marcaDe(const std::function<void(Medidas&)>& cambio, std::chrono::seconds paso = 61min) {
    auto todas = serie(41, paso);
    cambio(todas[20].medidas);
    return marcasDe(todas)[20];
}

TEST(Marcador, GoodWeatherHasNoMarks) {
    EXPECT_THAT(marcasDe(serie(500)), Each(""));
    EXPECT_THAT(marcasDe({}), testing::IsEmpty());
    EXPECT_THAT(marcasDe(serie(1)), ElementsAre(""));
}

struct Borde {
    const char* que;
    std::int32_t Medidas::*campo;
    std::int32_t dentro;
    std::int32_t fuera;
    const char* marca;
};

class Rango : public testing::TestWithParam<Borde> {};

// Neighbours an hour and more away, so that nothing jumps. That is further than any interval: each has a gap.
TEST_P(Rango, EndsWithItsLimit) {
    const auto& borde = GetParam();
    EXPECT_EQ(marcaDe([&](Medidas& m) { m.*borde.campo = borde.dentro; }), "hueco");
    EXPECT_EQ(marcaDe([&](Medidas& m) { m.*borde.campo = borde.fuera; }),
              std::string(borde.marca) + " hueco");
}

INSTANTIATE_TEST_SUITE_P(
    Canales, Rango,
    testing::Values(Borde{"cold", &Medidas::temperatura, -594, -595, "temperatura:rango"},
                    Borde{"hot", &Medidas::temperatura, 572, 573, "temperatura:rango"},
                    Borde{"dry", &Medidas::humedad, 0, -1, "humedad:rango"},
                    Borde{"damp", &Medidas::humedad, 105, 106, "humedad:rango"},
                    Borde{"low", &Medidas::presion, 600, 599, "presion:rango"},
                    Borde{"high", &Medidas::presion, 1049, 1050, "presion:rango"},
                    Borde{"calm", &Medidas::velViento, 0, -1, "vel_viento:rango"},
                    Borde{"storm", &Medidas::velViento, 2310, 2311, "vel_viento:rango"},
                    Borde{"dark", &Medidas::radSolar, 0, -1, "rad_solar:rango"},
                    Borde{"bright", &Medidas::radSolar, 150, 151, "rad_solar:rango"},
                    Borde{"lower rail", &Medidas::temperatura, conversiones::temperatura(1),
                          conversiones::temperatura(0), "temperatura:rango"},
                    Borde{"pressure's lower rail", &Medidas::presion, conversiones::presion(1),
                          conversiones::presion(0), "presion:rango"}));

// Limits may be finer than what the channel counts in, or wider than all that it can say.
TEST(Marcador, ALimitBetweenTwoValuesPartsThem) {
    Limites limites;
    const auto poner = [&](Millonesimas desde, Millonesimas hasta) {
        limites.rango[static_cast<std::size_t>(Canal::humedad)] = {desde, hasta};
    };
    const auto marca = [&](std::int32_t humedad) {
        auto todas = serie(1);
        todas[0].medidas.humedad = humedad;
        return marcasDe(todas, limites)[0];
    };
    poner(-10 * kUnidad - 1, 20 * kUnidad + 1);
    EXPECT_EQ(marca(-10), "");
    EXPECT_EQ(marca(-11), "humedad:rango");
    EXPECT_EQ(marca(20), "");
    EXPECT_EQ(marca(21), "humedad:rango");
    poner(-10 * kUnidad + 1, 20 * kUnidad - 1);
    EXPECT_EQ(marca(-10), "humedad:rango");
    EXPECT_EQ(marca(-9), "");
    EXPECT_EQ(marca(19), "");
    EXPECT_EQ(marca(20), "humedad:rango");
    poner(-INT64_C(9'000'000'000) * kUnidad, INT64_C(9'000'000'000) * kUnidad);
    EXPECT_EQ(marca(-70'000), "");
    EXPECT_EQ(marca(70'000), "");
}

TEST(Marcador, TheConvertersOtherRailsAreRangoWhateverTheLimits) {
    auto limites = limitesUsuales();
    for (auto& rango : limites.rango)
        if (rango) rango = LimiteRango{-100'000 * kUnidad, 100'000 * kUnidad};
    for (const int crudo : {0, 1023, 65535}) {
        auto todas = serie(3, 61min);
        todas[1].medidas.temperatura = conversiones::temperatura(crudo);
        todas[1].medidas.presion = conversiones::presion(crudo);
        EXPECT_EQ(marcasDe(todas, limites)[1], "temperatura:rango presion:rango hueco") << crudo;
        todas[1].medidas.temperatura = conversiones::temperatura(crudo == 0 ? 1 : crudo - 1);
        todas[1].medidas.presion = conversiones::presion(crudo == 0 ? 1 : crudo - 1);
        EXPECT_EQ(marcasDe(todas, limites)[1], "hueco") << crudo;
    }
}

struct Lluvia {
    std::chrono::minutes intervalo;
    int cabe;  // tenths of a millimetre
};

class RangoDeLluvia : public testing::TestWithParam<Lluvia> {};

TEST_P(RangoDeLluvia, IsInProportionToTheInterval) {
    const auto& [intervalo, cabe] = GetParam();
    EXPECT_EQ(marcaDe([&](Medidas& m) { m.lluvia = cabe; }, intervalo), "");
    EXPECT_EQ(marcaDe([&](Medidas& m) { m.lluvia = cabe + 1; }, intervalo), "lluvia:rango");
}

// 12.7 mm x minutes / 15.
INSTANTIATE_TEST_SUITE_P(Intervalos, RangoDeLluvia,
                         testing::Values(Lluvia{1min, 8}, Lluvia{5min, 42}, Lluvia{10min, 84},
                                         Lluvia{15min, 127}, Lluvia{30min, 254}, Lluvia{60min, 508}));

TEST(Marcador, RainIsJudgedByTheIntervalThatWasInForce) {
    auto todas = serie(40, 60min);
    for (auto& o : serie(40, 5min, todas.back().instante + 5min)) todas.push_back(o);
    todas[10].medidas.lluvia = todas[70].medidas.lluvia = 100;
    const auto marcas = marcasDe(todas);
    EXPECT_EQ(marcas[10], "");
    EXPECT_EQ(marcas[70], "lluvia:rango");
}

class Salto : public testing::TestWithParam<Borde> {};

// dentro and fuera: differences from the neighbour before.
TEST_P(Salto, IsWhatGoesBeyondItsLimit) {
    const auto& borde = GetParam();
    for (const int signo : {1, -1}) {
        const auto con = [&](std::int32_t diferencia, std::chrono::seconds paso) {
            std::vector<Observacion> dos{{.instante = kInicio, .medidas = buenas()},
                                         {.instante = kInicio + paso, .medidas = buenas()}};
            if (signo < 0) dos[0].medidas.*borde.campo += diferencia;
            if (signo > 0) dos[1].medidas.*borde.campo += diferencia;
            return marcasDe(dos)[1];
        };
        EXPECT_EQ(con(borde.dentro, 10min), "") << borde.que;
        EXPECT_EQ(con(borde.fuera, 10min), borde.marca) << borde.que;
        EXPECT_EQ(con(borde.fuera, 60min), borde.marca) << borde.que;
        EXPECT_EQ(con(borde.fuera, 60min + 1s), "hueco") << borde.que;
    }
}

INSTANTIATE_TEST_SUITE_P(Canales, Salto,
                         testing::Values(Borde{"temperature", &Medidas::temperatura, 100, 101,
                                               "temperatura:salto"},
                                         Borde{"pressure", &Medidas::presion, 10, 11, "presion:salto"},
                                         Borde{"wind", &Medidas::velViento, 1440, 1441, "vel_viento:salto"}));

TEST(Marcador, HumidityJumpsBeyondSixty) {
    auto dos = serie(2);
    dos[0].medidas.humedad = 20;
    dos[1].medidas.humedad = 80;
    EXPECT_EQ(marcasDe(dos)[1], "");
    dos[1].medidas.humedad = 81;
    EXPECT_EQ(marcasDe(dos)[1], "humedad:salto");
}

TEST(Marcador, ASpikeJumpsUpAndDown) {
    auto todas = serie(5);
    todas[2].medidas.temperatura = 500;
    EXPECT_THAT(marcasDe(todas), ElementsAre("", "", "temperatura:salto", "temperatura:salto", ""));
}

TEST(Marcador, TheNeighbourBeforeIsTheLastWithoutAConflict) {
    auto todas = serie(30);
    todas[10].medidas.temperatura = 500;
    todas[10].conflicto = true;
    auto marcas = marcasDe(todas);
    EXPECT_EQ(marcas[10], "conflicto") << "no jump of its own";
    EXPECT_EQ(marcas[11], "") << "and none against it";
    todas[11].medidas.temperatura = todas[9].medidas.temperatura + 101;
    EXPECT_EQ(marcasDe(todas)[11], "temperatura:salto") << "against the one before it";
}

TEST(Marcador, AConflictCarriesRangoAndItselfOnly) {
    auto todas = serie(30);
    auto otra = todas[15];
    todas[15].conflicto = otra.conflicto = true;
    otra.medidas.humedad = 106;
    otra.medidas.temperatura = 400;
    for (auto i = 15U; i < 30; ++i) todas[i].instante += 2h;
    otra.instante += 2h;
    todas.insert(todas.begin() + 16, otra);
    const auto marcas = marcasDe(todas);
    EXPECT_EQ(marcas[15], "conflicto") << "without the gap before it";
    EXPECT_EQ(marcas[16], "humedad:rango conflicto");
    EXPECT_EQ(marcas[17], "");
}

// minutos after the first sample the temperature moves.
std::vector<std::string> quieta(int cuantas, std::int32_t cambio,
                                const std::function<void(std::vector<Observacion>&)>& arreglo = {}) {
    auto todas = serie(cuantas);
    for (auto& o : todas) o.medidas.temperatura = 200;
    todas[static_cast<std::size_t>(cuantas / 2)].medidas.temperatura += cambio;
    if (arreglo) arreglo(todas);
    return marcasDe(todas);
}

TEST(Marcador, ATemperatureThatStandsStillForTwelveHours) {
    EXPECT_THAT(quieta(72, 0), Each("")) << "11 h 50 min";
    EXPECT_THAT(quieta(73, 0), Each("temperatura:fijo")) << "12 h";
    EXPECT_THAT(quieta(73, 4), Each("temperatura:fijo"));
    EXPECT_THAT(quieta(73, 5), Each(""));
}

TEST(Marcador, AGapBreaksARunAndAConflictIsLeftOut) {
    const auto con = [](auto arreglo) { return quieta(100, 0, arreglo); };
    const auto roto = con([](auto& t) {
        for (auto i = 50U; i < 100; ++i) t[i].instante += 10min;
    });
    EXPECT_EQ(roto[49], "");
    EXPECT_EQ(roto[50], "hueco");
    const auto conConflicto = con([](auto& t) {
        t[50].conflicto = true;
        t[50].medidas.temperatura = 300;
    });
    EXPECT_EQ(conConflicto[49], "temperatura:fijo");
    EXPECT_EQ(conConflicto[50], "conflicto");
    EXPECT_EQ(conConflicto[51], "temperatura:fijo");
    // A gap before the sample in conflict parts the neighbours around it too.
    const auto hueco = con([](auto& t) {
        t[50].conflicto = true;
        for (auto i = 50U; i < 100; ++i) t[i].instante += 10min;
    });
    EXPECT_EQ(hueco[49], "");
    EXPECT_EQ(hueco[50], "conflicto");
    EXPECT_EQ(hueco[51], "");
}

TEST(Marcador, ARunGoesOnOverTheYearsEnd) {
    auto todas = serie(73, 10min, instante({.anio = 2018, .mes = 12, .dia = 31}, {.hora = 18}));
    for (auto& o : todas) o.medidas.temperatura = 200;
    EXPECT_THAT(marcasDe(todas), Each("temperatura:fijo"));
}

std::vector<std::string> conViento(int cuantas, const std::function<void(Medidas&, int)>& cambio) {
    auto todas = serie(cuantas);
    for (int i = 0; i < cuantas; ++i) cambio(todas[static_cast<std::size_t>(i)].medidas, i);
    return marcasDe(todas);
}

TEST(Marcador, AWindThatStandsStillForThreeHoursAndIsNoCalm) {
    const auto siempre = [](int valor) { return [valor](Medidas& m, int) { m.velViento = valor; }; };
    EXPECT_THAT(conViento(18, siempre(100)), Each(""));
    EXPECT_THAT(conViento(19, siempre(100)), Each("vel_viento:fijo"));
    EXPECT_THAT(conViento(19, siempre(18)), Each("")) << "a mean of 1.8 is not above it";
    EXPECT_THAT(conViento(19, [](Medidas& m, int i) { m.velViento = i == 18 ? 20 : 18; }),
                Each("vel_viento:fijo"));
    EXPECT_THAT(conViento(19, [](Medidas& m, int i) { m.velViento = i == 9 ? 103 : 100; }),
                Each("vel_viento:fijo"));
    EXPECT_THAT(conViento(19, [](Medidas& m, int i) { m.velViento = i == 9 ? 104 : 100; }), Each(""));
}

TEST(Marcador, AVaneThatStandsStillInAWind) {
    const auto veleta = [](int otra, int viento) {
        return conViento(19, [=](Medidas& m, int i) {
            m.dirViento = i == 9 ? otra : 900;
            if (i == 12) m.velViento = viento;
        });
    };
    EXPECT_THAT(veleta(900, 100), Each("dir_viento:fijo"));
    EXPECT_THAT(veleta(910, 100), Each("dir_viento:fijo")) << "one degree is still";
    EXPECT_THAT(veleta(911, 100), Each(""));
    EXPECT_THAT(veleta(900, 19), Each("dir_viento:fijo"));
    EXPECT_THAT(veleta(900, 18), Each("")) << "a calm turns no vane";
}

TEST(Marcador, AsManyOfOneStampComeOutAsWentIn) {
    for (int cuantas = 1; cuantas <= 70; ++cuantas) {
        auto todas = serie(cuantas, 0s);
        for (auto& o : todas) o.conflicto = true;
        EXPECT_EQ(marcasDe(todas), std::vector<std::string>(todas.size(), "conflicto"));
    }
}

// Where nothing is asked of how long a channel stands still.
TEST(Marcador, HoldsBackAHandfulAndItsNeighbours) {
    std::size_t dichas = 0;
    Marcador marcador(Limites(), [&](const Juzgada&) { ++dichas; });
    for (std::size_t dentro = 1; dentro <= 1'000; ++dentro) {
        marcador.agregar({.instante = kInicio + static_cast<int>(dentro) * 10min, .medidas = buenas()});
        ASSERT_LT(dentro - dichas, Ritmo::kVecinos + Marcador::kDeUnaVez) << dentro;
    }
}

TEST(Marcador, HoldsBackNoMoreThanItNeeds) {
    std::size_t dichas = 0;
    Marcador marcador(limitesUsuales(), [&](const Juzgada&) { ++dichas; });
    for (int i = 0; i < 20'000; ++i) {
        auto m = buenas(i);
        if (i > 5'000 && i < 10'000) m.temperatura = 200;
        if (i > 8'000) m.velViento = i % 2 == 0 ? 60 : 62;
        marcador.agregar({.instante = kInicio + i * 10min, .medidas = m});
        constexpr std::size_t kDoceHoras = 72;
        ASSERT_GE(dichas + kDoceHoras + Ritmo::kVecinos + Marcador::kDeUnaVez + 2,
                  static_cast<std::size_t>(i));
    }
}

}  // namespace
}  // namespace telvane
