#include "platform/cp1252.h"

#include <array>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace telvane {
namespace {

std::vector<std::uint8_t> todosLosBytes() {
    std::vector<std::uint8_t> bytes;
    for (unsigned b = 0; b < 256; ++b) bytes.push_back(static_cast<std::uint8_t>(b));
    return bytes;
}

TEST(Cp1252, EachByteSurvivesTheRoundTrip) {
    const auto bytes = todosLosBytes();
    EXPECT_EQ(cp1252DeUtf8(utf8DeCp1252(bytes)), std::string(bytes.begin(), bytes.end()));
}

TEST(Cp1252, EachByteIsOneCharacter) {
    EXPECT_EQ(caracteres(utf8DeCp1252(todosLosBytes())), 256u);
}

// Code points of bytes 0x80 to 0x9F, as the code page has them; the others are their own.
constexpr std::array<char32_t, 32> kAltos = {U'€', 0x81, U'‚', U'ƒ', U'„', U'…', U'†', U'‡', U'ˆ', U'‰', U'Š',
                                             U'‹', U'Œ', 0x8D, U'Ž', 0x8F, 0x90, U'‘', U'’', U'“', U'”', U'•',
                                             U'–', U'—', U'˜', U'™', U'š', U'›', U'œ', 0x9D, U'ž', U'Ÿ'};

std::string utf8(char32_t punto) {
    const auto cola = [&](unsigned bits) { return static_cast<char>(0x80 + (punto >> bits) % 64); };
    if (punto < 0x80) return {static_cast<char>(punto)};
    if (punto < 0x800) return {static_cast<char>(0xC0 + punto / 64), cola(0)};
    if (punto < 0x10000) return {static_cast<char>(0xE0 + punto / 4096), cola(6), cola(0)};
    return {static_cast<char>(0xF0 + punto / 262144), cola(12), cola(6), cola(0)};
}

char byteEsperado(char32_t punto) {
    for (std::size_t i = 0; i < kAltos.size(); ++i) {
        if (kAltos[i] == punto) return static_cast<char>(0x80 + i);
    }
    return punto < 0x80 || (punto >= 0xA0 && punto < 0x100) ? static_cast<char>(punto) : '?';
}

bool esSustituto(char32_t punto) {
    return punto / 0x800 == 0xD800 / 0x800;
}

TEST(Cp1252, TheHighBytesAreThoseOfWindows) {
    std::string esperado;
    for (char32_t b = 0; b < 256; ++b) esperado += utf8(b >= 0x80 && b < 0xA0 ? kAltos[b - 0x80] : b);
    EXPECT_EQ(utf8DeCp1252(todosLosBytes()), esperado);
}

TEST(Cp1252, EachPointHasItsByteOrAQuestionMark) {
    for (char32_t punto = 0; punto < 0x120000; ++punto) {
        const auto texto = utf8(punto);
        const bool malo = esSustituto(punto) || punto > 0x10FFFF;
        const auto esperado = malo ? std::string(texto.size(), '?') : std::string(1, byteEsperado(punto));
        ASSERT_EQ(cp1252DeUtf8(texto), esperado) << static_cast<unsigned>(punto);
        ASSERT_EQ(caracteres(texto), esperado.size()) << static_cast<unsigned>(punto);
    }
}

TEST(Cp1252, TwoBytesAreOneCharacterOnlyIfWrittenSo) {
    for (unsigned a = 0; a < 256; ++a) {
        for (unsigned b = 0; b < 256; ++b) {
            const std::string texto = {static_cast<char>(a), static_cast<char>(b)};
            std::string esperado;
            for (const auto byte : {a, b}) esperado += byte < 0x80 ? static_cast<char>(byte) : '?';
            if (a >= 0xC2 && a < 0xE0 && b >= 0x80 && b < 0xC0) {
                esperado = {byteEsperado((a - 0xC0) * 64 + b - 0x80)};
            }
            ASSERT_EQ(cp1252DeUtf8(texto), esperado) << a << " " << b;
        }
    }
}

TEST(Cp1252, NoPointBeginsWithTheLastBytes) {
    for (unsigned b = 0xF8; b < 256; ++b) {
        EXPECT_EQ(cp1252DeUtf8(std::string{static_cast<char>(b)} + "\x90\x80\x80"), "????") << b;
    }
}

TEST(Cp1252, TheFirstCharactersAreCountedInPoints) {
    EXPECT_EQ(primerosCaracteres("Peñón", 0), "");
    EXPECT_EQ(primerosCaracteres("Peñón", 3), "Peñ");
    EXPECT_EQ(primerosCaracteres("Peñón", 4), "Peñó");
    EXPECT_EQ(primerosCaracteres("Peñón", 5), "Peñón");
    EXPECT_EQ(primerosCaracteres("Peñón", 9), "Peñón");
    EXPECT_EQ(primerosCaracteres("", 2), "");
}

TEST(Cp1252, TheFiveBytesWithoutACharacterAreControlsOfTheSameNumber) {
    const std::vector<std::uint8_t> bytes = {0x81, 0x8D, 0x8F, 0x90, 0x9D};
    EXPECT_EQ(utf8DeCp1252(bytes), "\xC2\x81\xC2\x8D\xC2\x8F\xC2\x90\xC2\x9D");
}

TEST(Cp1252, WhatHasNoPlaceIsAQuestionMark) {
    EXPECT_EQ(cp1252DeUtf8("a\u0416b"), "a?b");
    EXPECT_EQ(cp1252DeUtf8("日本"), "??");
    EXPECT_EQ(cp1252DeUtf8("😀"), "?");
}

TEST(Cp1252, EachMalformedByteIsAQuestionMark) {
    EXPECT_EQ(cp1252DeUtf8("a\xFF"
                           "b"),
              "a?b");
    EXPECT_EQ(cp1252DeUtf8("a\xC3"), "a?");
    EXPECT_EQ(cp1252DeUtf8("\xE2\x82z"), "??z");
}

TEST(Cp1252, OverlongFormsAndSurrogatesAreMalformed) {
    EXPECT_EQ(cp1252DeUtf8("\xC0\xAF"), "??") << "a slash written in two bytes is no slash";
    EXPECT_EQ(cp1252DeUtf8("\xE0\x80\xAF"), "???");
    EXPECT_EQ(cp1252DeUtf8("\xE0\x9F\xBF"), "???") << "the last that two bytes can say";
    EXPECT_EQ(cp1252DeUtf8("\xF0\x8F\xBF\xBF"), "????") << "the last that three bytes can say";
    EXPECT_EQ(cp1252DeUtf8("\xED\xA0\x80"), "???");
    EXPECT_EQ(cp1252DeUtf8("\xF4\x90\x80\x80"), "????");
}

TEST(Cp1252, CharactersCountPointsAndNotBytes) {
    EXPECT_EQ(caracteres(""), 0u);
    EXPECT_EQ(caracteres("Peñón"), 5u);
    EXPECT_EQ(caracteres("€"), 1u);
}

}  // namespace
}  // namespace telvane
