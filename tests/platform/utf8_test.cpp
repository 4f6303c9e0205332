#include "platform/utf8.h"

#include <string>

#include <gtest/gtest.h>

namespace telvane {
namespace {

constexpr char32_t kMalo = 0xFFFD;

std::string escrito(char32_t punto) {
    const auto cola = [&](unsigned bits) { return static_cast<char>(0x80 + (punto >> bits) % 64); };
    if (punto < 0x80) return {static_cast<char>(punto)};
    if (punto < 0x800) return {static_cast<char>(0xC0 + punto / 64), cola(0)};
    if (punto < 0x10000) return {static_cast<char>(0xE0 + punto / 4096), cola(6), cola(0)};
    return {static_cast<char>(0xF0 + punto / 262144), cola(12), cola(6), cola(0)};
}

TEST(CaracterUtf8, EachPointIsReadWithItsBytes) {
    for (char32_t punto = 0; punto < 0x120000; ++punto) {
        const auto texto = "a" + escrito(punto) + "z";
        const bool bueno = punto <= 0x10FFFF && (punto < 0xD800 || punto > 0xDFFF);
        const auto leido = caracterEn(texto, 1);
        ASSERT_EQ(leido.bueno, bueno) << static_cast<unsigned>(punto);
        ASSERT_EQ(leido.punto, bueno ? punto : kMalo) << static_cast<unsigned>(punto);
        ASSERT_EQ(leido.bytes, bueno ? texto.size() - 2 : 1) << static_cast<unsigned>(punto);
    }
}

TEST(CaracterUtf8, AByteByItselfIsACharacterBelow0x80Only) {
    for (unsigned byte = 0; byte < 256; ++byte) {
        const std::string solo(1, static_cast<char>(byte));
        for (const auto& texto : {solo, solo + "z", solo + "\xC3\xB1"}) {
            const auto leido = caracterEn(texto, 0);
            ASSERT_EQ(leido.bueno, byte < 0x80) << byte;
            ASSERT_EQ(leido.punto, byte < 0x80 ? byte : kMalo) << byte;
            ASSERT_EQ(leido.bytes, 1u) << byte;
        }
    }
}

TEST(CaracterUtf8, WhatBreaksOffIsMalformed) {
    for (const char32_t punto : {U'ñ', U'€', U'😀'}) {
        const auto entero = escrito(punto);
        for (std::size_t hasta = 1; hasta < entero.size(); ++hasta) {
            EXPECT_FALSE(caracterEn(entero.substr(0, hasta), 0).bueno) << hasta;
            EXPECT_FALSE(caracterEn(entero.substr(0, hasta) + "zzz", 0).bueno) << hasta;
        }
    }
}

TEST(CaracterUtf8, FormsThatAreLongerThanNeededAreMalformed) {
    for (const auto* texto : {"\xC0\x80", "\xC1\xBF", "\xE0\x80\x80", "\xE0\x9F\xBF", "\xF0\x80\x80\x80",
                              "\xF0\x8F\xBF\xBF", "\xF8\x88\x80\x80\x80"})
        EXPECT_FALSE(caracterEn(texto, 0).bueno) << texto;
}

}  // namespace
}  // namespace telvane
