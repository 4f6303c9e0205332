// What descargar --ficha tells of a download.
#include <nlohmann/json.hpp>

#include "link/codigos_suceso.h"
#include "tests/cli/cli_prueba.h"

namespace telvane {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::UnorderedElementsAre;

class Ficha : public CliPrueba {
   protected:
    nlohmann::json descargar(std::vector<std::string> mas = {}) {
        mas.insert(mas.begin(), {"descargar", "--com", "3=/dev/ttyUSB0", "--base", carpeta / "a.rgt",
                                 "--ficha", carpeta / "a.json"});
        const auto r = correr(mas);
        EXPECT_EQ(r.codigo, CodigoSalida::hecho) << r.errores;
        return nlohmann::json::parse(leerTodo(carpeta / "a.json"));
    }
    // The logger's clock says this byte instead, in every reading of the configuration.
    void relojConByte(std::size_t cual, std::uint8_t byte) {
        puertos.manipular(kPuerto, [=](const ByteSaliente& saliente) {
            const bool suyo =
                saliente.intercambio == Intercambio::lectura && saliente.indice == 2 + 105 + cual;
            return Efecto::pasar(suyo ? byte : saliente.byte);
        });
    }
};

TEST_F(Ficha, TellsWhenFromWhereAndHow) {
    const auto ficha = descargar();
    EXPECT_THAT(ficha["descargada"].get<std::string>(),
                testing::MatchesRegex("20[0-9]{2}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}Z"));
    EXPECT_EQ(ficha["puerto"], 3);
    EXPECT_EQ(ficha["dispositivo"], "/dev/ttyUSB0");
    EXPECT_EQ(ficha["serie"], "02080050");
    EXPECT_EQ(ficha["desfase_s"], 0);
    EXPECT_EQ(ficha["verificada"], false);
    EXPECT_EQ(ficha["reintentos"], 0);
    EXPECT_EQ(ficha["errores_de_linea"], 0);
    EXPECT_EQ(ficha["base"], "a.rgt");
    EXPECT_EQ(ficha["imagen"].get<std::string>().size(), 64U);
    EXPECT_THAT(nombresEn(carpeta.ruta()), UnorderedElementsAre("a.rgt", "a.json"));
}

TEST_F(Ficha, TellsHowFarTheClocksAreApartAndWhichIsAhead) {
    bucle.reloj().saltar(75s);
    EXPECT_EQ(descargar()["desfase_s"], -75);
    bucle.reloj().saltar(-48h);
    EXPECT_EQ(descargar({"--reemplazar"})["desfase_s"], 48 * 3600 - 75);
}

TEST_F(Ficha, AClockThatIsNoneTellsNothing) {
    relojConByte(1, 0x75);
    const auto ficha = descargar();
    EXPECT_TRUE(ficha["desfase_s"].is_null());
    EXPECT_TRUE(ficha["reloj"].is_null());
}

// Whoever answered before the download and whoever was downloaded are two.
TEST_F(Ficha, AnotherLoggersClockTellsNothing) {
    puertos.manipular(kPuerto, [](const ByteSaliente& saliente) {
        const bool deSerie =
            saliente.intercambio == Intercambio::descarga && saliente.indice >= 2 && saliente.indice < 6;
        return Efecto::pasar(deSerie ? 0x77 : saliente.byte);
    });
    const auto ficha = descargar();
    EXPECT_EQ(ficha["serie"], "77777777");
    EXPECT_TRUE(ficha["desfase_s"].is_null());
    EXPECT_TRUE(ficha["reloj"].is_null());
}

TEST_F(Ficha, CountsWhatWentWrong) {
    puertos.manipular(kPuerto, [veces = 0](const ByteSaliente& saliente) mutable {
        auto efecto = Efecto::pasar(saliente.byte);
        if (saliente.intercambio != Intercambio::descarga) return efecto;
        if (saliente.indice == 500) efecto.suceso = suceso::kMarco;
        if (saliente.indice == 6000 && ++veces == 1) efecto.callar = true;
        return efecto;
    });
    const auto ficha = descargar({"--verificar"});
    EXPECT_EQ(ficha["verificada"], true);
    EXPECT_EQ(ficha["reintentos"], 1);
    // In the attempt that broke off and in both that did not.
    EXPECT_EQ(ficha["errores_de_linea"], 3);
}

TEST_F(Ficha, IsWrittenOfAWholeDownloadOnly) {
    puertos.manipular(kPuerto, [](const ByteSaliente& saliente) {
        auto efecto = Efecto::pasar(saliente.byte);
        efecto.callar = saliente.intercambio == Intercambio::descarga && saliente.indice == 6000;
        return efecto;
    });
    const auto r = correr(
        {"descargar", "--base", carpeta / "a.rgt", "--ficha", carpeta / "a.json", "--reintentos", "0"});
    EXPECT_EQ(r.codigo, CodigoSalida::fallo);
    EXPECT_THAT(nombresEn(carpeta.ruta()), ElementsAre("a.rgt.parcial"));
}

TEST_F(Ficha, GoesToTheOutputAndThenNamesNoFile) {
    const auto r = correr({"descargar", "--base", carpeta / "a.rgt", "--ficha", "-"});
    EXPECT_EQ(nlohmann::json::parse(r.salida)["base"], "a.rgt");
    correr({"descargar", "--base", "-", "--ficha", carpeta / "f.json"});
    EXPECT_TRUE(nlohmann::json::parse(leerTodo(carpeta / "f.json"))["base"].is_null());
}

TEST_F(Ficha, IsAnOutputLikeTheOthers) {
    const auto rehusa = [&](const std::vector<std::string>& mas, CodigoSalida codigo, const char* que) {
        std::vector<std::string> todo = {"descargar", "--base", carpeta / "b"};
        todo.insert(todo.end(), mas.begin(), mas.end());
        const auto r = correr(todo);
        EXPECT_EQ(r.codigo, codigo) << que;
        EXPECT_THAT(r.errores, HasSubstr(que));
        EXPECT_EQ(puertos.aperturas(kPuerto), 0U);
    };
    rehusa({"--ficha", ""}, CodigoSalida::malUso, "--ficha: no puede estar vacío");
    rehusa({"--ficha", carpeta / "f.RGT"}, CodigoSalida::malUso, "f.RGT");
    rehusa({"--ficha", carpeta / "f.parcial"}, CodigoSalida::malUso, "f.parcial");
    rehusa({"--ficha", carpeta / "b"}, CodigoSalida::malUso, "--base y --ficha son el mismo archivo: ");
    rehusa({"--csv", carpeta / "c", "--ficha", carpeta / "c"}, CodigoSalida::malUso,
           "--csv y --ficha son el mismo archivo");
    rehusa({"--csv", "-", "--ficha", "-"}, CodigoSalida::malUso,
           "solo uno de --csv y --ficha puede ir a la salida: dé un archivo al otro");
    rehusa({"--ficha", carpeta / "no" / "f"}, CodigoSalida::fallo, "no existe la carpeta");
    rehusa({"--ficha", carpeta.ruta()}, CodigoSalida::fallo, "es una carpeta");
}

TEST_F(Ficha, AnotherLoggerThanTheNamedOneIsRefusedBeforeItsMemoryIsRead) {
    const auto r = correr({"descargar", "--base", carpeta / "a.rgt", "--serie", "02080051"});
    EXPECT_EQ(r.codigo, CodigoSalida::fallo);
    EXPECT_THAT(r.errores, HasSubstr("en COM3 responde el registrador 02080050, no el 02080051"));
    EXPECT_THAT(nombresEn(carpeta.ruta()), ElementsAre());
    EXPECT_EQ(correr({"descargar", "--base", carpeta / "a.rgt", "--serie", "02080050"}).codigo,
              CodigoSalida::hecho);
    EXPECT_EQ(correr({"descargar", "--base", carpeta / "b.rgt", "--serie", "0208"}).codigo,
              CodigoSalida::malUso);
}

}  // namespace
}  // namespace telvane
