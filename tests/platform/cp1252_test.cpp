#include "platform/cp1252.h"

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

TEST(Cp1252, cadaByteSobreviveLaIdaYVuelta) {
    const auto bytes = todosLosBytes();
    EXPECT_EQ(cp1252DeUtf8(utf8DeCp1252(bytes)), std::string(bytes.begin(), bytes.end()));
}

TEST(Cp1252, cadaByteEsUnCaracter) {
    EXPECT_EQ(caracteres(utf8DeCp1252(todosLosBytes())), 256u);
}

TEST(Cp1252, losBytesAltosSonLosDeWindows) {
    const std::vector<std::uint8_t> bytes = {0x80, 0x8A, 0x99, 0x9F, 0xA0, 0xBA, 0xF1, 0xFF};
    EXPECT_EQ(utf8DeCp1252(bytes), "€Š™Ÿ\u00A0ºñÿ");
}

TEST(Cp1252, losCincoBytesSinCaracterSonControlesDelMismoNumero) {
    const std::vector<std::uint8_t> bytes = {0x81, 0x8D, 0x8F, 0x90, 0x9D};
    EXPECT_EQ(utf8DeCp1252(bytes), "\xC2\x81\xC2\x8D\xC2\x8F\xC2\x90\xC2\x9D");
}

TEST(Cp1252, loQueNoTieneLugarEsUnaPregunta) {
    EXPECT_EQ(cp1252DeUtf8("a\u0416b"), "a?b");
    EXPECT_EQ(cp1252DeUtf8("日本"), "??");
    EXPECT_EQ(cp1252DeUtf8("😀"), "?");
}

TEST(Cp1252, unByteMalFormadoEsUnaPreguntaCadaUno) {
    EXPECT_EQ(cp1252DeUtf8("a\xFF"
                           "b"),
              "a?b");
    EXPECT_EQ(cp1252DeUtf8("a\xC3"), "a?");
    EXPECT_EQ(cp1252DeUtf8("\xE2\x82z"), "??z");
}

TEST(Cp1252, lasFormasLargasYLosSustitutosSonMalFormados) {
    EXPECT_EQ(cp1252DeUtf8("\xC0\xAF"), "??") << "a slash written in two bytes is no slash";
    EXPECT_EQ(cp1252DeUtf8("\xE0\x80\xAF"), "???");
    EXPECT_EQ(cp1252DeUtf8("\xED\xA0\x80"), "???");
    EXPECT_EQ(cp1252DeUtf8("\xF4\x90\x80\x80"), "????");
}

TEST(Cp1252, caracteresCuentaPuntosYNoBytes) {
    EXPECT_EQ(caracteres(""), 0u);
    EXPECT_EQ(caracteres("Peñón"), 5u);
    EXPECT_EQ(caracteres("€"), 1u);
}

}  // namespace
}  // namespace telvane
