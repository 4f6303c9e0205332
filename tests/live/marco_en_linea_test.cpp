// The live frame: every conversion over every raw value.
#include "live/marco_en_linea.h"

#include <array>
#include <cmath>
#include <string>

#include <gtest/gtest.h>

namespace telvane {
namespace {

using Marco = std::array<std::uint8_t, kBytesMarco>;

Marco con(std::size_t lugar, unsigned crudo) {
    Marco bytes{};
    bytes[lugar] = static_cast<std::uint8_t>(crudo >> 8);
    bytes[lugar + 1] = static_cast<std::uint8_t>(crudo & 0xFF);
    return bytes;
}

TextosMarco textos(const Marco& bytes) {
    return textosMarco(decodificarMarco(bytes));
}

// The plain formula's value to 15 significant digits, rounded half away from zero on its decimal digits.
std::string redondeo(double valor, int decimales) {
    std::array<char, 64> texto{};
    std::snprintf(texto.data(), texto.size(), "%.14e", std::abs(valor));
    long long cifras = 0;
    for (const char c : std::string(texto.data()).substr(0, 16)) {
        if (c != '.') cifras = cifras * 10 + (c - '0');
    }
    int exponente = std::stoi(std::string(texto.data()).substr(17)) - 14;  // valor = cifras * 10^exponente
    for (; exponente < -decimales; ++exponente) {
        const bool ultimo = exponente + 1 == -decimales;
        cifras = ultimo ? (cifras + 5) / 10 : cifras / 10;
    }
    for (; exponente > -decimales; --exponente) cifras *= 10;
    std::string entero = std::to_string(cifras);
    const auto ancho = static_cast<std::size_t>(decimales) + 1;
    if (entero.size() < ancho) entero.insert(0, ancho - entero.size(), '0');
    if (decimales > 0) entero.insert(entero.size() - static_cast<std::size_t>(decimales), 1, '.');
    return valor < 0 && cifras != 0 ? "-" + entero : entero;
}

TEST(MarcoEnLinea, EveryTwoByteConversionFollowsItsFormulaOverAllRawValues) {
    for (unsigned crudo = 0; crudo < 65536; ++crudo) {
        const double raw = static_cast<std::int16_t>(static_cast<std::uint16_t>(crudo));
        ASSERT_EQ(textos(con(marco::kHumedad, crudo)).humedad, redondeo((raw * 0.004 - 0.82) * 32.25, 0))
            << crudo;
        ASSERT_EQ(textos(con(marco::kTemperatura, crudo)).temperatura, redondeo(raw * 0.004 * 25.0 - 37.5, 1))
            << crudo;
        ASSERT_EQ(textos(con(marco::kVelViento, crudo)).velViento, redondeo(raw * 0.004 * 50.0 - 25.0, 1))
            << crudo;
        ASSERT_EQ(textos(con(marco::kRadSolar, crudo)).radSolar, redondeo(raw * 0.004 * 0.66, 3)) << crudo;
        ASSERT_EQ(textos(con(marco::kLluvia, crudo)).lluvia, redondeo(raw * 0.2, 1)) << crudo;
        ASSERT_EQ(textos(con(marco::kEvaporacion, crudo)).evaporacion, redondeo(raw / 100.0, 2)) << crudo;
        const unsigned presion = (crudo >> 8) > 3 ? 0 : crudo;
        ASSERT_EQ(textos(con(marco::kPresion, crudo)).presion, redondeo((presion + 98) * 0.899, 1)) << crudo;
    }
}

TEST(MarcoEnLinea, EveryWindDirectionByteFollowsItsFormula) {
    for (unsigned b = 0; b < 256; ++b) {
        Marco bytes{};
        bytes[marco::kDirViento] = static_cast<std::uint8_t>(b);
        ASSERT_EQ(textos(bytes).dirViento, redondeo(b * 2.25, 1));
    }
}

TEST(MarcoEnLinea, ZeroBytesShowTheOffsets) {
    const auto leido = textos(Marco{});
    EXPECT_EQ(leido.humedad, "-26");
    EXPECT_EQ(leido.temperatura, "-37.5");
    EXPECT_EQ(leido.velViento, "-25.0");
}

TEST(MarcoEnLinea, TheReadingsAreExactInThousandths) {
    const auto leido = decodificarMarco(Marco{});
    EXPECT_EQ(leido.humedad, -26445);
    EXPECT_EQ(leido.temperatura, -37500);
    EXPECT_EQ(leido.velViento, -25000);
    EXPECT_EQ(leido.presion, 88102);
    EXPECT_EQ(decodificarMarco(con(marco::kRadSolar, 1)).radSolar, 264) << "hundred-thousandths";
}

TEST(MarcoEnLinea, EachReadingHasItsPlace) {
    Marco bytes{};
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<std::uint8_t>(i);
    const auto leido = decodificarMarco(bytes);
    EXPECT_EQ(leido.humedad, 0x0304 * 129 - 26445);
    EXPECT_EQ(leido.temperatura, 0x0506 * 100 - 37500);
    EXPECT_EQ(leido.dirViento, 7 * 2250);
    EXPECT_EQ(leido.velViento, 0x0809 * 200 - 25000);
    EXPECT_EQ(leido.radSolar, 0x0A0B * 264);
    EXPECT_EQ(leido.presion, 98 * 899) << "12 is above 3";
    EXPECT_EQ(leido.lluvia, 0x0E0F * 200);
    EXPECT_EQ(leido.evaporacion, 0x1011 * 10);
    bytes[12] = 2;
    EXPECT_EQ(decodificarMarco(bytes).presion, (0x020D + 98) * 899);
}

TEST(MarcoEnLinea, WhatWasNotDecodedIsZero) {
    const MarcoEnLinea nada;
    for (const auto valor : {nada.humedad, nada.temperatura, nada.dirViento, nada.velViento, nada.radSolar,
                             nada.presion, nada.lluvia, nada.evaporacion}) {
        EXPECT_EQ(valor, 0);
    }
}

TEST(MarcoEnLinea, RainOfMinusOneIsNegative) {
    EXPECT_EQ(textos(con(marco::kLluvia, 0xFFFF)).lluvia, "-0.2");
}

TEST(MarcoEnLinea, APressureHighByteAboveThreeZeroesBoth) {
    EXPECT_EQ(textos(con(marco::kPresion, 0x0410)).presion, "88.1");
    EXPECT_EQ(textos(con(marco::kPresion, 0x0310)).presion, redondeo((0x0310 + 98) * 0.899, 1));
}

TEST(MarcoEnLinea, WindByte160Shows360) {
    Marco bytes{};
    bytes[marco::kDirViento] = 160;
    EXPECT_EQ(textos(bytes).dirViento, "360.0");
}

TEST(MarcoEnLinea, TheUnusedBytesChangeNothing) {
    const auto antes = lineasMarco(textos(Marco{}));
    for (std::size_t i = 0; i < kBytesMarco; ++i) {
        if (i >= marco::kHumedad && i < 18) continue;
        Marco bytes{};
        bytes[i] = 0xA5;
        EXPECT_EQ(lineasMarco(textos(bytes)), antes) << i;
    }
}

TEST(CanalesImposibles, AnAnalogueChannelEndsAtTenBitsAndTheDirectionAt360Degrees) {
    EXPECT_EQ(canalesImposibles(Marco{}), 0u);
    // One bit a channel, in the order of the frame; the others may say anything.
    const std::array<std::pair<std::size_t, unsigned>, 8> canales = {{{marco::kHumedad, 3},
                                                                      {marco::kTemperatura, 3},
                                                                      {marco::kDirViento, 160},
                                                                      {marco::kVelViento, 3},
                                                                      {marco::kRadSolar, 3},
                                                                      {marco::kPresion, 255},
                                                                      {marco::kLluvia, 255},
                                                                      {marco::kEvaporacion, 255}}};
    for (std::size_t i = 0; i < canales.size(); ++i) {
        const auto& [lugar, maximo] = canales[i];
        for (unsigned byte = 0; byte < 256; ++byte) {
            Marco bytes{};
            bytes[lugar] = static_cast<std::uint8_t>(byte);
            ASSERT_EQ(canalesImposibles(bytes), byte > maximo ? 1u << i : 0u) << lugar << ' ' << byte;
        }
    }
}

TEST(CanalesImposibles, SeveralAreToldTogether) {
    Marco bytes{};
    bytes.fill(0xFF);
    EXPECT_EQ(canalesImposibles(bytes), 0b11111u);
    bytes[marco::kDirViento] = 0;
    EXPECT_EQ(canalesImposibles(bytes), 0b11011u);
}

TEST(MarcoEnLinea, WritesEightLines) {
    EXPECT_EQ(lineasMarco(textos(Marco{})),
              "[RH%]=-26%\r\nTemp[ºC]=-37.5ºC\r\nDir Viento [º]=0.0\r\nvel Viento [Km/h]=-25.0\r\n"
              "Rad Solar kW/m2=0.000\r\nPresion Atm [kPa]=88.1\r\nPluv [mm]=0.0\r\nEvaporacion=0.00\r\n");
}

}  // namespace
}  // namespace telvane
