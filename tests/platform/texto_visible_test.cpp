#include "platform/texto_visible.h"

#include <gtest/gtest.h>

namespace telvane {
namespace {

TEST(SinControles, LeavesTextAndTakesOrdersToTheTerminalAway) {
    EXPECT_EQ(sinControles("Señor Ñandú 20 € 日本 😀"), "Señor Ñandú 20 € 日本 😀");
    EXPECT_EQ(sinControles("a\x1b[31mb\r\n\tc\x7f"), "a[31mbc");
    EXPECT_EQ(lineasSinControles("a\x1b[31mb\r\n\n\tc\x7f\n"), "a[31mb\n\nc\n");
    EXPECT_EQ(sinControles(std::string_view("a\0b", 3)), "ab");
    // C1 as characters; the letters beside them share their first byte.
    EXPECT_EQ(sinControles("\u0080\u009b\u009f\u00a0\u00bf"), "\u00a0\u00bf");
}

TEST(SinControles, AMalformedByteIsMarkedAndNothingElseIsLost) {
    EXPECT_EQ(sinControles("a\x9b"
                           "b"),
              "a\uFFFD"
              "b");
    EXPECT_EQ(sinControles("a\xc3"), "a\uFFFD");
    EXPECT_EQ(sinControles("\xc3\x28"), "\uFFFD(");
    EXPECT_EQ(sinControles("\xe2\x82"), "\uFFFD\uFFFD");
    // Overlong, a surrogate, beyond the last character.
    EXPECT_EQ(sinControles("\xc0\x9b"), "\uFFFD\uFFFD");
    EXPECT_EQ(sinControles("\xe0\x80\x9b"), "\uFFFD\uFFFD\uFFFD");
    EXPECT_EQ(sinControles("\xed\xa0\x80"), "\uFFFD\uFFFD\uFFFD");
    EXPECT_EQ(sinControles("\xf4\x90\x80\x80"), "\uFFFD\uFFFD\uFFFD\uFFFD");
}

// Without them it would be the name of another file, or seem to be.
TEST(NombreVisible, WhatIsNotShownIsMarked) {
    EXPECT_EQ(nombreVisible("a\nb.rgt"), "a\uFFFDb.rgt");
    EXPECT_EQ(nombreVisible("a\x1b[31m\x7f\u009b\xff.rgt"), "a\uFFFD[31m\uFFFD\uFFFD\uFFFD.rgt");
    EXPECT_EQ(nombreVisible("Ñandú 日本.rgt"), "Ñandú 日本.rgt");
    for (const auto* vuelta : {"\u061C", "\u200E", "\u200F", "\u202A", "\u202B", "\u202C", "\u202D", "\u202E",
                               "\u2066", "\u2067", "\u2068", "\u2069"}) {
        EXPECT_EQ(nombreVisible(std::string("a") + vuelta + "tgr.b"), "a\uFFFDtgr.b");
        EXPECT_EQ(lineasSinControles(std::string("a") + vuelta + "\nb"), "a\uFFFD\nb");
    }
    // Their neighbours belong to names.
    EXPECT_EQ(nombreVisible("a\u061B\u061D\u200D\u2010\u2029\u202F\u2065\u206A"),
              "a\u061B\u061D\u200D\u2010\u2029\u202F\u2065\u206A");
}

TEST(Utf8Valido, EveryByteThatIsNoneIsMarkedAndTheRestStays) {
    EXPECT_EQ(utf8Valido("Año 日本 😀\n\x1b\x7f\u009b"), "Año 日本 😀\n\x1b\x7f\u009b");
    EXPECT_EQ(utf8Valido("a\xf1o.rgt"), "a\uFFFDo.rgt");
    EXPECT_EQ(utf8Valido(std::string_view("a\0b\xe2\x82", 5)), "a\uFFFDb\uFFFD\uFFFD");
}

TEST(ControlesEscapados, WritesWhatJsonLetsThrough) {
    EXPECT_EQ(controlesEscapados("\"a\x7f\u009b\u00f1\""), "\"a\\u007f\\u009b\u00f1\"");
    EXPECT_EQ(controlesEscapados("{\n  \"a\": 1\n}"), "{\n  \"a\": 1\n}");
}

}  // namespace
}  // namespace telvane
