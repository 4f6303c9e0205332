// The command line of telvane.
#include "app/opciones.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace telvane {
namespace {

using ::testing::HasSubstr;

TEST(LineaDeOrdenesDeTelvane, WithoutArgumentsThePresentPortsAndTheStrictProfileHold) {
    const auto ordenes = leerOrdenes({});
    ASSERT_TRUE(ordenes.opciones.has_value());
    EXPECT_TRUE(ordenes.opciones->com.empty());
    EXPECT_EQ(ordenes.opciones->perfil, Perfil::estricto);
}

TEST(LineaDeOrdenesDeTelvane, ComMayBeRepeated) {
    const auto ordenes = leerOrdenes({"--com", "1=/dev/a", "--com=3=/dev/b", "--perfil", "ampliado"});
    ASSERT_TRUE(ordenes.opciones.has_value());
    EXPECT_EQ(ordenes.opciones->com, (std::vector<std::string>{"1=/dev/a", "3=/dev/b"}));
    EXPECT_EQ(ordenes.opciones->perfil, Perfil::ampliado);
}

TEST(LineaDeOrdenesDeTelvane, HelpAndVersionGoToTheOutputInSpanish) {
    const auto ayuda = leerOrdenes({"--help"});
    EXPECT_FALSE(ayuda.opciones.has_value());
    EXPECT_EQ(ayuda.estado, 0);
    for (const auto* parte :
         {"Uso: telvane", "Opciones:", "--com", "--perfil", "--version", "Muestra esta ayuda"}) {
        EXPECT_THAT(ayuda.salida, HasSubstr(parte));
    }
    const auto version = leerOrdenes({"--version"});
    EXPECT_EQ(version.estado, 0);
    EXPECT_THAT(version.salida, ::testing::StartsWith("telvane 1.10"));
}

TEST(LineaDeOrdenesDeTelvane, HelpAndVersionAreGivenWhereWhatStandsBeforeThemIsRight) {
    for (const auto* pedido : {"--help", "-h", "--version"}) {
        EXPECT_EQ(leerOrdenes({"--com", "1=/dev/a", pedido, "--com", "xx"}).estado, 0) << pedido;
        const auto puerto = leerOrdenes({"--com", "xx", pedido});
        EXPECT_EQ(puerto.estado, 2) << pedido;
        EXPECT_THAT(puerto.error, HasSubstr("--com xx: se espera NÚMERO=DISPOSITIVO"));
        EXPECT_EQ(puerto.salida, "");
        const auto perfil = leerOrdenes({"--perfil", "xx", pedido});
        EXPECT_EQ(perfil.estado, 2) << pedido;
        EXPECT_THAT(perfil.error, HasSubstr("--perfil: debe ser estricto o ampliado"));
    }
}

TEST(LineaDeOrdenesDeTelvane, WhatWasTypedGivesTheTerminalNoOrders) {
    EXPECT_THAT(leerOrdenes({"\x1b[2Jsuelto\x7f"}).error, HasSubstr("[2Jsuelto"));
    EXPECT_THAT(leerOrdenes({"\x1b[2Jsuelto\x7f"}).error,
                ::testing::Not(::testing::AnyOf(HasSubstr("\x1b"), HasSubstr("\x7f"))));
}

class UsoIncorrecto : public ::testing::TestWithParam<std::vector<std::string>> {};

TEST_P(UsoIncorrecto, EndsWithTwoAndSaysSoInSpanish) {
    const auto ordenes = leerOrdenes(GetParam());
    EXPECT_FALSE(ordenes.opciones.has_value());
    EXPECT_EQ(ordenes.estado, 2);
    EXPECT_TRUE(ordenes.salida.empty());
    EXPECT_THAT(ordenes.error, ::testing::StartsWith("telvane: "));
}

INSTANTIATE_TEST_SUITE_P(argumentos, UsoIncorrecto,
                         ::testing::Values(std::vector<std::string>{"--com"},
                                           std::vector<std::string>{"--com", "x"},
                                           std::vector<std::string>{"--com", "1=/dev/a", "--com", "1=/dev/b"},
                                           std::vector<std::string>{"--com", "0=/dev/a"},
                                           std::vector<std::string>{"--perfil", "otro"},
                                           std::vector<std::string>{"--nada"},
                                           std::vector<std::string>{"suelto"}));

}  // namespace
}  // namespace telvane
