// Every conversion over every raw value, against the formula written in the plainest way.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include "data/medidas.h"
#include "tests/data/registro_prueba.h"

namespace telvane {
namespace {

// The double taken to 15 significant digits, then rounded half away from zero on the decimal digits
// themselves, then without trailing zeros and without the sign of a zero.
std::string textoLlano(double valor, int decimales) {
    if (valor == 0) return "0";
    char cientifico[64];
    std::snprintf(cientifico, sizeof cientifico, "%.14e", std::fabs(valor));
    std::string cifras;
    for (const char* p = cientifico; *p != 'e'; ++p) {
        if (*p != '.') cifras += *p;
    }
    const int exponente =
        std::atoi(std::string(cientifico).substr(std::string(cientifico).find('e') + 1).c_str());
    // cifras x 10^(exponente - 14); keep the digits down to the last decimal and look at the next one.
    const int quedan = exponente + 1 + decimales;
    std::string enteras = quedan > 0 ? cifras.substr(0, static_cast<std::size_t>(quedan)) : "0";
    const char siguiente = quedan < 0 ? '0' : cifras[static_cast<std::size_t>(quedan)];
    long long numero = std::stoll(enteras) + (siguiente >= '5' ? 1 : 0);
    if (numero == 0) return "0";
    std::string texto = std::to_string(numero);
    while (texto.size() <= static_cast<std::size_t>(decimales)) texto.insert(0, "0");
    if (decimales > 0) {
        texto.insert(texto.size() - static_cast<std::size_t>(decimales), ".");
        while (texto.back() == '0') texto.pop_back();
        if (texto.back() == '.') texto.pop_back();
    }
    return (valor < 0 ? "-" : "") + texto;
}

std::string columna(const std::string& linea, int numero) {
    std::size_t desde = 0;
    for (int i = 0; i < numero; ++i) desde = linea.find(',', desde) + 1;
    return linea.substr(desde, linea.find_first_of(",\r", desde) - desde);
}

struct Leido {
    std::string texto;
    Muestra muestra;
};

// One decoder for all the raw values of a test, in the evaporation variant.
class Conversiones : public ::testing::Test {
   protected:
    Conversiones() { decodificador_.evaporacion(true); }

    Leido leer(const RegistroPrueba& registro, int numeroDeColumna) {
        decodificador_.lineaMuestras.clear();
        const auto linea = darRegistro(decodificador_, 0, registro);
        return {columna(linea, numeroDeColumna), decodificador_.muestra()};
    }

    void comprobar(const Leido& leido, float Muestra::*campo, double valor, int decimales, unsigned crudo) {
        const auto esperado = textoLlano(valor, decimales);
        ASSERT_EQ(leido.texto, esperado) << "raw " << crudo;
        ASSERT_EQ(leido.muestra.*campo, std::strtof(esperado.c_str(), nullptr)) << "raw " << crudo;
    }

    Decodificador decodificador_ = decodificadorEnMarcha();
};

constexpr unsigned kDosBytes = 65536;
constexpr unsigned kUnByte = 256;

TEST_F(Conversiones, HumidityOfEveryRawValueIsWhole) {
    for (unsigned crudo = 0; crudo < kDosBytes; ++crudo) {
        comprobar(leer({.humedad = static_cast<std::uint16_t>(crudo)}, 2), &Muestra::humedad,
                  (crudo * 0.004 - 0.82) * 32.25, 0, crudo);
        if (HasFatalFailure()) return;
    }
}

TEST_F(Conversiones, TemperatureOfEveryRawValueHasTwoDecimals) {
    for (unsigned crudo = 0; crudo < kDosBytes; ++crudo) {
        comprobar(leer({.temperatura = static_cast<std::uint16_t>(crudo)}, 3), &Muestra::temperatura,
                  (crudo * 0.004 - 1.5) * 25, 2, crudo);
        if (HasFatalFailure()) return;
    }
}

TEST_F(Conversiones, WindDirectionOfEveryByteHasOneDecimal) {
    for (unsigned crudo = 0; crudo < kUnByte; ++crudo) {
        comprobar(leer({.viento = static_cast<std::uint8_t>(crudo)}, 4), &Muestra::dirViento, crudo * 2.25, 1,
                  crudo);
        if (HasFatalFailure()) return;
    }
}

TEST_F(Conversiones, WindSpeedOfEveryRawValueHasOneDecimal) {
    for (unsigned crudo = 0; crudo < kDosBytes; ++crudo) {
        comprobar(leer({.velViento = static_cast<std::uint16_t>(crudo)}, 6), &Muestra::velViento,
                  (crudo * 0.004 - 0.5) * 50, 1, crudo);
        if (HasFatalFailure()) return;
    }
}

TEST_F(Conversiones, RadiationOfEveryRawValueHasTwoDecimals) {
    for (unsigned crudo = 0; crudo < kDosBytes; ++crudo) {
        comprobar(leer({.radSolar = static_cast<std::uint16_t>(crudo)}, 7), &Muestra::radSolar,
                  crudo * 2.66 / 1000, 2, crudo);
        if (HasFatalFailure()) return;
    }
}

TEST_F(Conversiones, PressureOfEveryRawValueHasOneDecimal) {
    for (unsigned crudo = 0; crudo < kDosBytes; ++crudo) {
        comprobar(leer({.presion = static_cast<std::uint16_t>(crudo)}, 8), &Muestra::presion,
                  (crudo + 98) * 0.899, 1, crudo);
        if (HasFatalFailure()) return;
    }
}

TEST_F(Conversiones, RainOfEveryByteHasOneDecimal) {
    for (unsigned crudo = 0; crudo < kUnByte; ++crudo) {
        comprobar(leer({.lluvia = static_cast<std::uint8_t>(crudo)}, 9), &Muestra::lluvia, crudo * 0.2, 1,
                  crudo);
        if (HasFatalFailure()) return;
    }
}

TEST_F(Conversiones, EvaporationOfEveryRawValueHasTwoDecimals) {
    for (unsigned crudo = 0; crudo < kDosBytes; ++crudo) {
        comprobar(leer({.evaporacion = static_cast<std::uint16_t>(crudo)}, 10), &Muestra::evaporacion,
                  crudo * 0.01, 2, crudo);
        if (HasFatalFailure()) return;
    }
}

TEST_F(Conversiones, TheAuxiliaryChannelsOfEveryRawValueStayInTheSample) {
    for (unsigned crudo = 0; crudo < kDosBytes; ++crudo) {
        const auto par = static_cast<std::uint16_t>(crudo);
        const auto muestra = leer({.auxiliar1 = par, .auxiliar2 = par}, 0).muestra;
        ASSERT_EQ(muestra.auxiliar1, std::strtof(textoLlano(crudo * 0.2, 1).c_str(), nullptr)) << crudo;
        ASSERT_EQ(muestra.auxiliar2, std::strtof(textoLlano(crudo * 0.01, 2).c_str(), nullptr)) << crudo;
    }
}

TEST_F(Conversiones, AHalfGoesAwayFromZeroInTheDecimalValue) {
    EXPECT_EQ(leer({.radSolar = 3250}, 7).texto, "8.65");
    EXPECT_EQ(leer({.presion = 52}, 8).texto, "134.9");
    EXPECT_EQ(leer({.viento = 1}, 4).texto, "2.3");
}

TEST_F(Conversiones, WhatRoundsToZeroHasNoSign) {
    EXPECT_EQ(leer({.humedad = 205}, 2).texto, "0");
    EXPECT_EQ(leer({.humedad = 202}, 2).texto, "0") << "-0.387";
    EXPECT_EQ(leer({.temperatura = 375}, 3).texto, "0");
    EXPECT_EQ(leer({.velViento = 125}, 6).texto, "0");
}

TEST_F(Conversiones, HumidityIsNotCutAtAHundredPercent) {
    EXPECT_EQ(leer({.humedad = 980}, 2).texto, "100");
    EXPECT_EQ(leer({.humedad = 0}, 2).texto, "-26");
    EXPECT_EQ(leer({.humedad = 1023}, 2).texto, "106");
}

TEST_F(Conversiones, TrailingZerosAreNotWritten) {
    EXPECT_EQ(leer({.temperatura = 590}, 3).texto, "21.5");
    EXPECT_EQ(leer({.lluvia = 0}, 9).texto, "0");
    EXPECT_EQ(leer({.evaporacion = 120}, 10).texto, "1.2");
    EXPECT_EQ(leer({.evaporacion = 5}, 10).texto, "0.05");
}

TEST_F(Conversiones, EachByteOfTheCompassHasItsNameAndNoOther) {
    const std::array<const char*, 16> nombres = {"NNO", "NO", "ONO", "O", "OSO", "SO", "SSO", "S",
                                                 "SSE", "SE", "ESE", "E", "ENE", "NE", "NNE", "N"};
    for (unsigned crudo = 0; crudo < kUnByte; ++crudo) {
        const bool exacto = crudo >= 10 && crudo <= 160 && crudo % 10 == 0;
        const std::string esperado = exacto ? nombres[crudo / 10 - 1] : "---";
        const auto leido = leer({.viento = static_cast<std::uint8_t>(crudo)}, 5);
        EXPECT_EQ(leido.texto, esperado) << crudo;
        EXPECT_EQ(leido.muestra.dirVientoR, esperado) << crudo;
    }
}

TEST_F(Conversiones, WindByteZeroHasNoNameAnd160IsNorth) {
    const auto linea = [&](std::uint8_t crudo) {
        return leer({.viento = crudo}, 4).texto + " " + leer({.viento = crudo}, 5).texto;
    };
    EXPECT_EQ(linea(0), "0 ---");
    EXPECT_EQ(linea(160), "360 N");
    EXPECT_EQ(linea(14), "31.5 ---");
}

TEST(Medidas, WhatNoRecordSaidIsZero) {
    const Medidas m;
    EXPECT_EQ(m.crudoDirViento, 0);
    for (const auto valor : {m.humedad, m.temperatura, m.dirViento, m.velViento, m.radSolar, m.presion,
                             m.lluvia, m.evaporacion, m.auxiliar1, m.auxiliar2})
        EXPECT_EQ(valor, 0);
}

}  // namespace
}  // namespace telvane
