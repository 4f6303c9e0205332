#include "calidad/marcas.h"

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace telvane {
namespace {

using testing::ElementsAre;

TEST(Marcas, AreNamedInTheOrderOfTheColumns) {
    Marcas marcas;
    marcas.ponerConflicto();
    marcas.ponerHueco();
    marcas.poner(Canal::evaporacion, Marca::rango);
    marcas.poner(Canal::velViento, Marca::fijo);
    marcas.poner(Canal::velViento, Marca::rango);
    marcas.poner(Canal::velViento, Marca::salto);
    marcas.poner(Canal::humedad, Marca::salto);
    EXPECT_EQ(
        marcas.texto(),
        "humedad:salto vel_viento:rango vel_viento:salto vel_viento:fijo evaporacion:rango hueco conflicto");
    EXPECT_EQ(marcas.lista().size(), 7U);
}

TEST(Marcas, NoneIsTheEmptyText) {
    EXPECT_EQ(Marcas().texto(), "");
    EXPECT_TRUE(Marcas().ninguna());
    Marcas conHueco;
    conHueco.ponerHueco();
    EXPECT_EQ(conHueco.texto(), "hueco");
    EXPECT_FALSE(conHueco.enAlgunCanal());
    EXPECT_FALSE(conHueco.ninguna());
}

TEST(Marcas, ThereAreThreeOfEachOfTheEightColumns) {
    EXPECT_THAT(kNombresCanal, ElementsAre("humedad", "temperatura", "dir_viento", "vel_viento", "rad_solar",
                                           "presion", "lluvia", "evaporacion"));
    EXPECT_THAT(kNombresMarca, ElementsAre("rango", "salto", "fijo"));
}

TEST(Marcas, EachStandsForItselfAlone) {
    for (std::size_t c = 0; c < kCanales; ++c) {
        for (std::size_t m = 0; m < kMarcas; ++m) {
            const auto canal = static_cast<Canal>(c);
            Marcas marcas;
            marcas.poner(canal, static_cast<Marca>(m));
            EXPECT_EQ(marcas.texto(), std::string(kNombresCanal[c]) + ":" + std::string(kNombresMarca[m]));
            EXPECT_TRUE(marcas.enAlgunCanal() && !marcas.ninguna() && !marcas.hueco() && !marcas.conflicto());
            for (std::size_t otro = 0; otro < kCanales; ++otro)
                EXPECT_EQ(marcas.tiene(static_cast<Canal>(otro)), otro == c) << c << " " << m << " " << otro;
        }
    }
    Marcas hueco;
    hueco.ponerHueco();
    EXPECT_TRUE(hueco.hueco() && !hueco.conflicto() && !hueco.enAlgunCanal());
    Marcas conflicto;
    conflicto.ponerConflicto();
    EXPECT_TRUE(conflicto.conflicto() && !conflicto.hueco() && !conflicto.enAlgunCanal());
    EXPECT_EQ(conflicto.texto(), "conflicto");
}

}  // namespace
}  // namespace telvane
