#include "data/linea_muestra.h"

#include <algorithm>
#include <string>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "tests/data/registro_prueba.h"

namespace telvane {
namespace {

constexpr RegistroPrueba kDelMedio{.humedad = 700,
                                   .temperatura = 590,
                                   .viento = 40,
                                   .velViento = 190,
                                   .radSolar = 320,
                                   .presion = 14,
                                   .lluvia = 3,
                                   .evaporacion = 125};
// Every channel as long as it can get.
constexpr RegistroPrueba kLargo{.humedad = 65535,
                                .temperatura = 65534,
                                .viento = 130,
                                .velViento = 65534,
                                .radSolar = 65535,
                                .presion = 65535,
                                .lluvia = 254,
                                .evaporacion = 65535};

TEST(LineaMuestra, HasTheColumnsOfTheVariant) {
    EXPECT_EQ(lineaDe(kDelMedio.bytes(), false), "20/11/2018,17:04:09,64,21.5,90,O,13,0.85,100.7,0.6\r\n");
    EXPECT_EQ(lineaDe(kDelMedio.bytes(), true),
              "20/11/2018,17:04:09,64,21.5,90,O,13,0.85,100.7,0.6,1.25\r\n");
}

TEST(ObjetoMuestra, HasTheMembersOfTheVariant) {
    EXPECT_EQ(objetoDe(kDelMedio.bytes(), false),
              R"({"hora":"2018-11-20T17:04:09","humedad":64,"temperatura":21.5,"dir_viento":90,)"
              R"("dir_viento_r":"O","vel_viento":13,"rad_solar":0.85,"presion":100.7,"lluvia":0.6})"
              "\n");
    EXPECT_EQ(objetoDe(kDelMedio.bytes(), true),
              R"({"hora":"2018-11-20T17:04:09","humedad":64,"temperatura":21.5,"dir_viento":90,)"
              R"("dir_viento_r":"O","vel_viento":13,"rad_solar":0.85,"presion":100.7,"lluvia":0.6,)"
              R"("evaporacion":1.25})"
              "\n");
}

TEST(ObjetoMuestra, TheLongestValuesFit) {
    EXPECT_EQ(objetoDe(kLargo.bytes(), true),
              R"({"hora":"2018-11-20T17:04:09","humedad":8428,"temperatura":6515.9,"dir_viento":292.5,)"
              R"("dir_viento_r":"ENE","vel_viento":13081.8,"rad_solar":174.32,"presion":59004.1,)"
              R"("lluvia":50.8,"evaporacion":655.35})"
              "\n");
}

TEST(ObjetoMuestra, AStampWithCarryGivesTheRealDate) {
    const auto objeto = objetoDe(RegistroPrueba{.sello = {0x29, 0, 0, 0x39, 0x19, 0x13}}.bytes(), false);
    EXPECT_EQ(objeto.substr(0, 30), R"({"hora":"2014-08-08T05:00:00",)");
}

TEST(UnaColumnaMas, IsWrittenBetweenTheLastValueAndTheEnd) {
    std::array<char, kLineaMaxima + 32> sitio{};
    char* p = escribirColumnas(sitio.data(), kDelMedio.bytes(), false);
    p = cerrarLinea(escribirTexto(p, "hueco,"));
    EXPECT_TRUE(std::string(sitio.data(), p).ends_with(",0.6,hueco\r\n"));
    std::array<char, kObjetoMaximo + 32> objeto{};
    p = escribirMiembros(objeto.data(), kDelMedio.bytes(), true);
    p = cerrarObjeto(escribirTexto(p, R"("calidad":[],)"));
    EXPECT_TRUE(std::string(objeto.data(), p)
                    .ends_with(R"("evaporacion":1.25,"calidad":[]})"
                               "\n"));
}

RC_GTEST_PROP(ObjetoMuestraAlAzar, ItsValuesAreThoseOfTheLine, (bool evaporacion)) {
    auto bytes = *rc::gen::container<BytesMuestra>(rc::gen::arbitrary<std::uint8_t>());
    std::copy(kSelloBueno.begin(), kSelloBueno.end(), bytes.begin());
    // Names, braces and quotes aside, behind date and time.
    auto valores = objetoDe(bytes, evaporacion).substr(30);
    std::string soloValores;
    for (std::size_t i = 0; i < valores.size();) {
        i = valores.find(':', i) + 1;
        const auto fin = valores.find_first_of(",}", i);
        soloValores += valores.substr(i, fin - i) + ",";
        i = valores[fin] == '}' ? valores.size() : fin;
    }
    std::erase(soloValores, '"');
    soloValores.pop_back();
    RC_ASSERT(soloValores + "\r\n" == lineaDe(bytes, evaporacion).substr(20));
}

}  // namespace
}  // namespace telvane
