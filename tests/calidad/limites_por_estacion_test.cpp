#include "calidad/limites_por_estacion.h"

#include <fstream>
#include <string>
#include <utility>

#include <gtest/gtest.h>

namespace telvane {
namespace {

using namespace std::chrono_literals;

constexpr auto kTemperatura = static_cast<std::size_t>(Canal::temperatura);
constexpr auto kViento = static_cast<std::size_t>(Canal::velViento);

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
