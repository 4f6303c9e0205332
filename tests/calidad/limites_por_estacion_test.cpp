#include "calidad/limites_por_estacion.h"

#include <fstream>
#include <string>
#include <string_view>
#include <utility>

#include <gtest/gtest.h>

namespace telvane {
namespace {

using namespace std::chrono_literals;

constexpr auto kTemperatura = static_cast<std::size_t>(Canal::temperatura);
constexpr auto kViento = static_cast<std::size_t>(Canal::velViento);
constexpr auto kVeleta = static_cast<std::size_t>(Canal::dirViento);

// The limits of a station of whose section these are the lines.
Limites leidos(const std::string& lineas) {
    return LimitesPorEstacion::leer("[02080050]\n" + lineas, "x").de("02080050");
}

bool seLee(const std::string& texto) {
    try {
        LimitesPorEstacion::leer(texto, "x");
        return true;
    } catch (const ErrorLimites&) {
        return false;
    }
}

TEST(LimitesPorEstacion, ChangeTheirStationAndNoOther) {
    const auto limites = LimitesPorEstacion::leer(
        "# Mendoza\r\n[02080050]\r\ntemperatura.rango = -40 50\r\n  temperatura.salto=8\n\n"
        "temperatura.fijo = 12h 0.3\n; la otra\n[02080051/NORTE]\nvel_viento.fijo = 90min 0.5 2.5",
        "calidad.ini");
    EXPECT_EQ(limites.de("02080050").rango[kTemperatura], (LimiteRango{-40 * kUnidad, 50 * kUnidad}));
    EXPECT_EQ(limites.de("02080050").salto[kTemperatura], 8 * kUnidad);
    EXPECT_EQ(limites.de("02080050").fijo[kTemperatura], (LimiteFijo{12h, 300'000, 0}));
    EXPECT_EQ(limites.de("02080050").fijo[kViento], limitesUsuales().fijo[kViento]);
    EXPECT_EQ(limites.de("02080051/NORTE").fijo[kViento], (LimiteFijo{90min, 500'000, 2'500'000}));
    EXPECT_EQ(limites.de("02080051"), limitesUsuales());
}

TEST(LimitesPorEstacion, TheWindsThresholdStaysWhereItIsNotGiven) {
    const auto limites = LimitesPorEstacion::leer("[02080050]\nvel_viento.fijo = 4h 0.1\n", "x");
    EXPECT_EQ(limites.de("02080050").fijo[kViento], (LimiteFijo{4h, 100'000, 1'800'000}));
}

TEST(LimitesPorEstacion, TheWindsThresholdIsTheThirdNumber) {
    EXPECT_EQ(leidos("dir_viento.fijo = 4h 2 0.5").fijo[kVeleta], (LimiteFijo{4h, 2 * kUnidad, 500'000}));
    EXPECT_EQ(leidos("dir_viento.fijo = 4h 2").fijo[kVeleta], (LimiteFijo{4h, 2 * kUnidad, 1'800'000}));
}

TEST(LimitesPorEstacion, NumbersHaveUpToSixDigitsOnEitherSideOfThePoint) {
    const auto salto = [](const std::string& numero) {
        return leidos("temperatura.salto = " + numero).salto[kTemperatura];
    };
    EXPECT_EQ(salto("0"), 0);
    EXPECT_EQ(salto("-0"), 0);
    EXPECT_EQ(salto("0.000001"), 1);
    EXPECT_EQ(salto("0.9"), 900'000);
    EXPECT_EQ(salto("09.09"), 9'090'000);
    EXPECT_EQ(salto("999999.999999"), INT64_C(999'999'999'999));
    EXPECT_EQ(leidos("temperatura.rango = -999999.999999 -0.5").rango[kTemperatura],
              (LimiteRango{-INT64_C(999'999'999'999), -500'000}));
    for (const auto* malo :
         {"1000000", "0000001", "1.0000001", "1.0000000", "1.", ".5", ".",    "-", "--1", "+1", "1.-1",
          "1.+1",    "-.5",     "1.2.3",     "1e3",       "1:", "1/", "1.5x", "x", "1 2", "",   "8*"})
        EXPECT_FALSE(seLee(std::string("[02080050]\ntemperatura.salto = ") + malo)) << malo;
}

TEST(LimitesPorEstacion, ARangeMayBeOneValue) {
    EXPECT_EQ(leidos("temperatura.rango = 5 5").rango[kTemperatura], (LimiteRango{5 * kUnidad, 5 * kUnidad}));
    for (const auto* malo : {"5.000001 5", "-4 -5", "x 5", "5 x", "1 2 3", "5", ""})
        EXPECT_FALSE(seLee(std::string("[02080050]\ntemperatura.rango = ") + malo)) << malo;
}

TEST(LimitesPorEstacion, StillIsWhatLastsOneToTenThousandHoursOrMinutes) {
    const auto fijo = [](const std::string& valores) {
        return leidos("temperatura.fijo = " + valores).fijo[kTemperatura];
    };
    EXPECT_EQ(fijo("1h 0"), (LimiteFijo{1h, 0, 0}));
    EXPECT_EQ(fijo("1min 0.000001"), (LimiteFijo{1min, 1, 0}));
    EXPECT_EQ(fijo("10000h 1"), (LimiteFijo{10'000h, kUnidad, 0}));
    EXPECT_EQ(fijo("10000min 1"), (LimiteFijo{10'000min, kUnidad, 0}));
    for (const auto* malo :
         {"10001h 1", "10001min 1", "99999999999h 1", "0min 1",        "-1h 1",   "+1h 1",  "h 1",
          "min 1",    "in 1",       "12 1",           "12s 1",         "12H 1",   "12hh 1", "12 h",
          "1.5h 1",   "12h",        "12h x",          "12h -0.000001", "12h 1 1", ""})
        EXPECT_FALSE(seLee(std::string("[02080050]\ntemperatura.fijo = ") + malo)) << malo;
    for (const auto* malo : {"4h 0.1 1 2", "4h 0.1 x", "4h"})
        EXPECT_FALSE(seLee(std::string("[02080050]\nvel_viento.fijo = ") + malo)) << malo;
}

TEST(LimitesPorEstacion, OnlyWhatTheTableHoldsCanBeChanged) {
    for (const auto* clave :
         {"dir_viento.rango", "evaporacion.rango", "lluvia.salto", "dir_viento.salto", "humedad.fijo",
          "presion.fijo", "temperatura.", "temperatura.rangos", ".rango", "."})
        for (const auto* valores : {"1 2", "1", "12h 1"})
            EXPECT_FALSE(seLee(std::string("[02080050]\n") + clave + " = " + valores)) << clave;
}

// Each character in each place: the digits as the programs show a damaged number's, and the names of two
// loggers with one number.
TEST(LimitesPorEstacion, StationsAreNamedAsTheArchiveNamesThem) {
    for (int codigo = 1; codigo < 256; ++codigo) {
        const auto c = static_cast<char>(codigo);
        for (std::size_t i = 0; i < 8; ++i) {
            std::string serie = "02080050";
            serie[i] = c;
            EXPECT_EQ(seLee("[" + serie + "]"), c >= '0' && c <= '?') << codigo;
        }
        const bool deNombre =
            std::string_view("0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz-_").find(c) !=
            std::string_view::npos;
        EXPECT_EQ(seLee(std::string("[02080050/") + c + "]"), deNombre) << codigo;
        EXPECT_EQ(seLee(std::string("[02080050/N") + c + "S]"), deNombre) << codigo;
        EXPECT_FALSE(seLee(std::string("[02080050") + c + "]") && c != ' ' && c != '\t' && c != '\r')
            << codigo;
        EXPECT_EQ(seLee(std::string("[02080050") + c + "NORTE]"), c == '/') << codigo;
    }
    EXPECT_FALSE(seLee("["));
    EXPECT_FALSE(seLee("[]"));
    EXPECT_TRUE(seLee("[ 02080050\t]"));
}

TEST(LimitesPorEstacion, AnEditorsMarkAtTheBeginningSaysNothing) {
    EXPECT_EQ(LimitesPorEstacion::leer("\xEF\xBB\xBF[02080050]\ntemperatura.salto = 8", "x")
                  .de("02080050")
                  .salto[kTemperatura],
              8 * kUnidad);
    EXPECT_FALSE(seLee("\xEF\xBB\xBF\xEF\xBB\xBF[02080050]"));
}

// The names and numbers that the manual gives, all of them.
TEST(LimitesPorEstacion, AreTheOnesOfTheManual) {
    std::ifstream manual(MANUAL);
    std::string linea;
    while (std::getline(manual, linea) && linea != "### Los límites de las marcas") {
    }
    while (std::getline(manual, linea) && linea != "```") {
    }
    std::string dichos;
    std::size_t cuantos = 0;
    while (std::getline(manual, linea) && linea != "```") {
        dichos += linea + "\n";
        if (linea.find('=') == std::string::npos) continue;
        ++cuantos;
        // It says what holds, and is not only let through.
        EXPECT_EQ(LimitesPorEstacion::leer("[02080050]\n" + linea, "manual").de("02080050"), limitesUsuales())
            << linea;
    }
    EXPECT_EQ(LimitesPorEstacion::leer(dichos, "manual").de("02080050"), limitesUsuales());
    std::size_t hay = 0;
    for (std::size_t i = 0; i < kCanales; ++i) {
        hay += limitesUsuales().rango[i].has_value() + limitesUsuales().salto[i].has_value() +
               limitesUsuales().fijo[i].has_value();
    }
    EXPECT_EQ(cuantos, hay);
}

TEST(LimitesPorEstacion, AnEmptyFileChangesNothing) {
    EXPECT_EQ(LimitesPorEstacion::leer("", "x").de("02080050"), limitesUsuales());
    EXPECT_EQ(LimitesPorEstacion::leer("\n[02080050]\n", "x").de("02080050"), limitesUsuales());
}

class LimitesRehusados : public testing::TestWithParam<std::pair<const char*, const char*>> {};

TEST_P(LimitesRehusados, SayTheLineAndTheReason) {
    const auto& [texto, motivo] = GetParam();
    try {
        LimitesPorEstacion::leer(texto, "calidad.ini");
        FAIL() << "accepted";
    } catch (const ErrorLimites& error) {
        EXPECT_EQ(std::string(error.what()), std::string("calidad.ini: ") + motivo);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Lineas, LimitesRehusados,
    testing::Values(
        std::pair{"[02080050]\n\ntemperatrua.rango = 1 2", "línea 3: nombre desconocido: temperatrua.rango"},
        std::pair{"[02080050]\ntemperatura.rnago = 1 2", "línea 2: nombre desconocido: temperatura.rnago"},
        std::pair{"[02080050]\ntemperatura = 1 2", "línea 2: nombre desconocido: temperatura"},
        std::pair{"[02080050]\ndir_viento.salto = 1", "línea 2: nombre desconocido: dir_viento.salto"},
        std::pair{"[02080050]\ntemperatura.salto = 1\n[02080051]\ntemperatura.salto = 1\n[02080050]\n"
                  "temperatura.salto=2",
                  "línea 6: temperatura.salto ya está en la línea 2: deje una de las dos"},
        std::pair{"temperatura.salto = 1", "línea 1: falta la estación, como [02080050]"},
        std::pair{"[2080050]", "línea 1: se espera una estación entre corchetes, como [02080050]"},
        std::pair{"[02080050/]", "línea 1: se espera una estación entre corchetes, como [02080050]"},
        std::pair{"[02080050", "línea 1: se espera una estación entre corchetes, como [02080050]"},
        std::pair{"[02080050]\ntemperatura.salto", "línea 2: se espera nombre = valores"},
        std::pair{"[02080050]\ntemperatura.salto = -1", "línea 2: se espera un número que no sea negativo"},
        std::pair{"[02080050]\ntemperatura.salto = 1,5", "línea 2: se espera un número que no sea negativo"},
        std::pair{"[02080050]\ntemperatura.rango = 5", "línea 2: se esperan dos números, el menor primero"},
        std::pair{"[02080050]\ntemperatura.rango = 5 4", "línea 2: se esperan dos números, el menor primero"},
        std::pair{"[02080050]\ntemperatura.fijo = 12 0.3",
                  "línea 2: se esperan una duración y un número, como 12h 0.3"},
        std::pair{"[02080050]\ntemperatura.fijo = 12h 0.3 1",
                  "línea 2: se esperan una duración y un número, como 12h 0.3"},
        std::pair{"[02080050]\ntemperatura.fijo = 0h 0.3",
                  "línea 2: se esperan una duración y un número, como 12h 0.3"}));

}  // namespace
}  // namespace telvane
