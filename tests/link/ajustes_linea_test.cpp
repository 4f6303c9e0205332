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

struct Rehusado {
    const char* texto;
    const char* motivo;
};
class AjustesRehusados : public testing::TestWithParam<Rehusado> {};

TEST_P(AjustesRehusados, AreRefusedWithTheReasonInSpanish) {
    try {
        AjustesLinea::leer(GetParam().texto);
        FAIL() << "accepted";
    } catch (const ErrorPuerto& error) {
        EXPECT_EQ(error.motivo(), MotivoPuerto::lineaInvalida);
        EXPECT_EQ(std::string(error.what()), "ajustes de línea \"" + std::string(GetParam().texto) +
                                                 "\" no válidos: " + GetParam().motivo);
    }
}

constexpr const char* kPartes =
    "se esperan velocidad, paridad, bits de datos y bits de parada, separados por comas";
constexpr const char* kVelocidad = "velocidad desconocida";
constexpr const char* kParidad = "la paridad es n, e, o, m o s";
constexpr const char* kDatos = "los bits de datos van de 5 a 8";
constexpr const char* kParada = "los bits de parada son 1 o 2";
INSTANTIATE_TEST_SUITE_P(
    Disparates, AjustesRehusados,
    testing::Values(Rehusado{"", kPartes}, Rehusado{"19200", kPartes}, Rehusado{"19200,n,8", kPartes},
                    Rehusado{"19200,n,8,1,", kPartes}, Rehusado{"19200,n,8,1,x", kPartes},
                    Rehusado{",n,8,1", kVelocidad}, Rehusado{"19201,n,8,1", kVelocidad},
                    Rehusado{"0,n,8,1", kVelocidad}, Rehusado{"-19200,n,8,1", kVelocidad},
                    Rehusado{"19200 ,n,8,1", kVelocidad}, Rehusado{"1e4,n,8,1", kVelocidad},
                    Rehusado{"99999999999999,n,8,1", kVelocidad}, Rehusado{"19200,x,8,1", kParidad},
                    Rehusado{"19200,,8,1", kParidad}, Rehusado{"19200,nn,8,1", kParidad},
                    Rehusado{"19200,.,8,1", kParidad}, Rehusado{"19200,*,8,1", kParidad},
                    Rehusado{"19200, ,8,1", kParidad}, Rehusado{"19200,n,4,1", kDatos},
                    Rehusado{"19200,n,9,1", kDatos}, Rehusado{"19200,n,,1", kDatos},
                    Rehusado{"19200,n,8,0", kParada}, Rehusado{"19200,n,8,3", kParada},
                    Rehusado{"19200,n,8,1.5", kParada}, Rehusado{"19200,n,8,", kParada}));

}  // namespace
}  // namespace telvane
