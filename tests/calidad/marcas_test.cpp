#include "calidad/marcas.h"

#include <gtest/gtest.h>

namespace telvane {
namespace {

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

}  // namespace
}  // namespace telvane
