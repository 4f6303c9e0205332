#include <string>

#include <gtest/gtest.h>

#include "link/puerto_serie.h"

namespace telvane {
namespace {

TEST(AjustesLinea, ReadsTheLoggersLine) {
    const auto ajustes = AjustesLinea::leer("19200,n,8,1");
    EXPECT_EQ(ajustes.baudios, 19200);
    EXPECT_EQ(ajustes.paridad, 'n');
    EXPECT_EQ(ajustes.bitsDatos, 8);
    EXPECT_EQ(ajustes.bitsParada, 1);
    EXPECT_FALSE(ajustes.dtr);
    EXPECT_FALSE(ajustes.rts);
}

TEST(AjustesLinea, ParityIsReadInEitherCase) {
    EXPECT_EQ(AjustesLinea::leer("9600,E,7,2").paridad, 'e');
    EXPECT_EQ(AjustesLinea::leer("110,O,5,1").paridad, 'o');
    EXPECT_EQ(AjustesLinea::leer("921600,m,6,1").paridad, 'm');
    EXPECT_EQ(AjustesLinea::leer("300,s,8,2").paridad, 's');
}

class AjustesRehusados : public testing::TestWithParam<const char*> {};

TEST_P(AjustesRehusados, AreRefusedWithTheReasonInSpanish) {
    try {
        AjustesLinea::leer(GetParam());
        FAIL() << "accepted";
    } catch (const ErrorPuerto& error) {
        EXPECT_EQ(error.motivo(), MotivoPuerto::lineaInvalida);
        EXPECT_NE(std::string(error.what())
                      .find("ajustes de línea \"" + std::string(GetParam()) + "\" no válidos: "),
                  std::string::npos);
    }
}

INSTANTIATE_TEST_SUITE_P(Disparates, AjustesRehusados,
                         testing::Values("", "19200", "19200,n,8", "19200,n,8,1,", "19200,n,8,1,x", ",n,8,1",
                                         "19201,n,8,1", "0,n,8,1", "-19200,n,8,1", "19200 ,n,8,1",
                                         "1e4,n,8,1", "99999999999999,n,8,1", "19200,x,8,1", "19200,,8,1",
                                         "19200,nn,8,1", "19200,\x2e,8,1", "19200,n,4,1", "19200,n,9,1",
                                         "19200,n,,1", "19200,n,8,0", "19200,n,8,3", "19200,n,8,1.5",
                                         "19200,n,8,"));

}  // namespace
}  // namespace telvane
