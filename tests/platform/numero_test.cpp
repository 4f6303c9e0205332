#include "platform/numero.h"

#include <cstdint>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace telvane {
namespace {

TEST(Numero, AWholeTextIsRead) {
    EXPECT_EQ(numeroDe<int>("0"), 0);
    EXPECT_EQ(numeroDe<int>("-12"), -12);
    EXPECT_EQ(numeroDe<std::uint16_t>("65535"), 65535);
    EXPECT_EQ(numeroDe<unsigned>("0ff", 16), 255U);
    EXPECT_EQ(numeroDe<double>("1.5"), 1.5);
}

TEST(Numero, WhatIsMoreThanANumberOrDoesNotFitIsNone) {
    for (const auto* texto : {"", " 1", "1 ", "+1", "1,", "x", "-", "99999999999"})
        EXPECT_FALSE(numeroDe<int>(texto)) << texto;
    EXPECT_FALSE(numeroDe<std::uint16_t>("65536"));
    EXPECT_FALSE(numeroDe<std::uint16_t>("-1"));
    EXPECT_FALSE(numeroDe<int>("ff"));
    for (const auto* texto : {"", "1.5h", ".", "1e999"}) EXPECT_FALSE(numeroDe<double>(texto)) << texto;
}

// The text's end counts, not what stands behind it.
TEST(Numero, APartOfATextEndsWhereItEnds) {
    const std::string texto = "12345";
    EXPECT_EQ(numeroDe<int>(std::string_view(texto).substr(1, 2)), 23);
    EXPECT_FALSE(numeroDe<int>(std::string_view(texto).substr(1, 0)));
}

}  // namespace
}  // namespace telvane
