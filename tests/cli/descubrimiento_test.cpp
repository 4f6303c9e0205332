// What home automation is told of the sensors: each line parsed as whoever subscribes does.
#include "cli/descubrimiento.h"

#include <set>
#include <sstream>

#include <nlohmann/json.hpp>

#include "tests/cli/cli_prueba.h"

namespace telvane {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;
using testing::MatchesRegex;

std::vector<nlohmann::json> objetos(const std::string& texto) {
    std::vector<nlohmann::json> lista;
    std::istringstream lineas(texto);
    for (std::string linea; std::getline(lineas, linea);) lista.push_back(nlohmann::json::parse(linea));
    return lista;
}

DatosConfig datosDe(const std::string& serie, const std::string& ubicacion) {
    DatosConfig datos;
    datos.Nserie = serie;
    datos[CampoTexto::ubicacion] = ubicacion;
    return datos;
}

class Descubrimiento : public CliPrueba {};

TEST_F(Descubrimiento, EachSensorIsOneLineThatNamesAMemberOfTheReadings) {
    const auto r = correr({"en-linea", "--descubrimiento"});
    ASSERT_EQ(r.codigo, CodigoSalida::hecho) << r.errores;
    EXPECT_FALSE(puertos.abierto(kPuerto));
    const auto lectura = nlohmann::json::parse(correr({"en-linea", "--cuenta", "1", "--json"}).salida);
    std::set<std::string> ids;
    for (const auto& sensor : objetos(r.salida)) {
        SCOPED_TRACE(sensor.dump());
        EXPECT_THAT(sensor["unique_id"].get<std::string>(), MatchesRegex("telvane_02080050_[a-z_]+"));
        ids.insert(sensor["unique_id"]);
        EXPECT_EQ(sensor["state_topic"], "telvane/02080050/lecturas");
        EXPECT_EQ(sensor["device"]["identifiers"], nlohmann::json({"telvane_02080050"}));
        EXPECT_TRUE(sensor["unit_of_measurement"].is_string());
        EXPECT_TRUE(sensor["name"].is_string());
        const auto plantilla = sensor["value_template"].get<std::string>();
        ASSERT_THAT(plantilla, MatchesRegex("\\{\\{ value_json\\.[a-z_]+( \\* 1000)? \\}\\}"));
        const auto miembro = plantilla.substr(14, plantilla.find(' ', 14) - 14);
        EXPECT_TRUE(lectura[miembro].is_number()) << miembro;
    }
    EXPECT_EQ(ids.size(), 8U);
}

TEST_F(Descubrimiento, TheFirstMemberIsTheIdThatTopicsAreMadeOf) {
    EXPECT_THAT(descubrimientoJson(datosDe("02080051", "A"), 60s),
                testing::StartsWith("{\"unique_id\":\"telvane_02080051_humedad\","));
}

TEST_F(Descubrimiento, ALoggerWithoutEvaporationHasNoSuchSensor) {
    EXPECT_EQ(objetos(descubrimientoJson(datosDe("02080050", ""), 60s)).size(), 8U);
    const auto otros = objetos(descubrimientoJson(datosDe("12345678", ""), 60s));
    EXPECT_EQ(otros.size(), 7U);
    EXPECT_EQ(otros.front()["device"]["name"], "Estación 12345678");
}

TEST_F(Descubrimiento, TheLoggersTextsAreTextAndNeverMore) {
    const auto texto = descubrimientoJson(datosDe("02080050", "  A\"}\\\x1b\u0085\n#/+ ñ  "), 60s);
    for (const auto& sensor : objetos(texto)) EXPECT_EQ(sensor["device"]["name"], "A\"}\\#/+ ñ");
    EXPECT_EQ(texto.find('\x1b'), std::string::npos);
    EXPECT_EQ(texto.find('\n', 0), texto.find("}\n") + 1);
}

// A number that was never written is made of nibbles beyond nine.
TEST_F(Descubrimiento, ASerialNumberOfOtherDigitsGivesIdsOfLetters) {
    for (const auto& sensor : objetos(descubrimientoJson(datosDe(":;<=>?09", "A"), 60s))) {
        EXPECT_THAT(sensor["unique_id"].get<std::string>(), testing::StartsWith("telvane_abcdef09_"));
        EXPECT_EQ(sensor["state_topic"], "telvane/abcdef09/lecturas");
    }
}

TEST_F(Descubrimiento, TheReadingIsTakenTwiceAndADamagedOneDoesNotCount) {
    // The serial number's second byte of the first reading.
    int lecturas = 0;
    puertos.manipular(kPuerto, [&](const ByteSaliente& saliente) {
        const bool es = saliente.intercambio == Intercambio::lectura && saliente.indice == 2 + 1;
        return Efecto::pasar(es && lecturas++ == 0 ? 0x09 : saliente.byte);
    });
    const auto r = correr({"en-linea", "--descubrimiento"});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho);
    EXPECT_THAT(r.salida, HasSubstr("telvane_02080050_humedad"));
    EXPECT_EQ(r.salida.find("telvane_02090050"), std::string::npos);
}

// Or it would be unknown between two of them.
TEST_F(Descubrimiento, ASensorOutlivesTwoLostReadings) {
    const auto caduca = [&](std::vector<std::string> mas) {
        mas.insert(mas.begin(), {"en-linea", "--descubrimiento"});
        return objetos(correr(mas).salida).at(0)["expire_after"].get<int>();
    };
    EXPECT_EQ(caduca({}), 900);
    EXPECT_EQ(caduca({"--cada", "60"}), 900);
    EXPECT_EQ(caduca({"--cada", "301"}), 903);
    EXPECT_EQ(caduca({"--cada", "3600"}), 10800);
}

TEST_F(Descubrimiento, ReadingsAreNotCountedWhereNoneAreTaken) {
    for (const auto& sobra : std::vector<std::vector<std::string>>{{"--cuenta", "2"}, {"--json"}}) {
        std::vector<std::string> orden{"en-linea", "--descubrimiento"};
        orden.insert(orden.end(), sobra.begin(), sobra.end());
        const auto r = correr(orden);
        EXPECT_EQ(r.codigo, CodigoSalida::malUso);
        EXPECT_THAT(r.errores, HasSubstr("quite " + sobra.front()));
    }
}

}  // namespace
}  // namespace telvane
