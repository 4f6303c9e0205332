// Words of a command line that the options library has a meaning of its own for.
#include "platform/argumentos.h"

#include <optional>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace telvane {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

using Palabras = std::vector<std::string>;

class ArgumentosDeLinea : public testing::Test {
   protected:
    LineaLeida leer(Palabras palabras) {
        Argumentos linea("programa", "1", "");
        linea.programa().opcion(com, {.nombre = "--com", .valor = "X", .ayuda = ""});
        auto orden = linea.orden("convertir", "");
        orden.opcion(archivos,
                     {.nombre = "ARCHIVO", .valor = "", .ayuda = "", .comprobar = {}, .obligatoria = true});
        orden.opcion(en, {.nombre = "--en", .valor = "X", .ayuda = ""});
        orden.opcion(usuario, {.nombre = "--usuario", .valor = "X", .ayuda = ""});
        linea.orden("buscar", "");
        palabras.insert(palabras.begin(), "convertir");
        return linea.leer(palabras);
    }
    void exigirQueCorra(const Palabras& palabras) {
        const auto leida = leer(palabras);
        EXPECT_EQ(leida.que, LineaLeida::Que::correr) << leida.texto;
    }

    Palabras com;
    Palabras archivos;
    std::string en;
    std::optional<std::string> usuario;
    bool bandera = false;
};

TEST_F(ArgumentosDeLinea, AWrongOneIsToldWithTheHelpThatNamesIt) {
    EXPECT_EQ(leer({"a", "--nada"}).texto, "no se entiende \"--nada\"\n(programa convertir --help)");
    EXPECT_EQ(leer({"a", "--en"}).texto, "--en: falta su valor o sobra alguno\n(programa convertir --help)");
    EXPECT_EQ(leer({"--com", "buscar"}).texto, "falta ARCHIVO\n(programa convertir --help)");
    Argumentos linea("programa", "1", "");
    linea.programa().opcion(com, {.nombre = "--com", .valor = "X", .ayuda = ""});
    linea.orden("buscar", "");
    EXPECT_EQ(linea.leer({"--com", "buscar", "nada"}).texto, "no hay una orden \"nada\"\n(programa --help)");
    EXPECT_EQ(linea.leer({"nada", "--help"}).texto, "no hay una orden \"nada\"\n(programa --help)");
    EXPECT_EQ(linea.leer({"nada", "--version"}).texto, "no hay una orden \"nada\"\n(programa --help)");
    EXPECT_EQ(linea.leer({"--nada", "--help"}).texto, "no se entiende \"--nada\"\n(programa --help)");
    EXPECT_EQ(linea.leer({"--version"}).que, LineaLeida::Que::terminar);
    EXPECT_EQ(linea.leer({"--com", "x", "buscar", "--nada"}).texto,
              "no se entiende \"--nada\"\n(programa buscar --help)");
}

TEST_F(ArgumentosDeLinea, TheHelpIsGivenWhereWhatStandsBeforeItIsUnderstood) {
    Palabras nada;
    const auto con = [&](Palabras palabras) {
        Argumentos linea("programa", "1", "");
        linea.programa().opcion(com, {.nombre = "--com", .valor = "X", .ayuda = ""});
        linea.orden("buscar", "Busca").bandera(bandera, "--json", "");
        linea.orden("dar", "Da").opcion(nada, {.nombre = "ARCHIVO", .valor = "", .ayuda = ""});
        const auto leida = linea.leer(std::move(palabras));
        return leida.que == LineaLeida::Que::terminar ? leida.texto.substr(0, leida.texto.find('\n'))
                                                      : "! " + leida.texto;
    };
    for (const auto& palabras : {Palabras{"buscar", "--help"},
                                 {"buscar", "--help", "--nada"},
                                 {"buscar", "-h", "-hj", "x", "--com"},
                                 {"--help", "buscar", "--nada"},
                                 {"--help", "--com", "1=x", "buscar"},
                                 {"buscar", "--help", "--", "x"},
                                 {"--com", "1=x", "buscar", "-h", "--json", "--json"}})
        EXPECT_EQ(con(palabras), "Busca") << testing::PrintToString(palabras);
    EXPECT_EQ(con({"dar", "x", "y", "--help"}), "Da");
    EXPECT_EQ(con({"buscar", "--version", "--nada"}), "programa 1");
    const auto no = [](std::string_view que) {
        return fmt::format("! no se entiende \"{}\"\n(programa buscar --help)", que);
    };
    EXPECT_EQ(con({"buscar", "--nada", "--help"}), no("--nada"));
    EXPECT_EQ(con({"--nada", "buscar", "--help"}), no("--nada"));
    EXPECT_EQ(con({"buscar", "--nada", "--version"}), no("--nada"));
    EXPECT_EQ(con({"buscar", "x", "--help"}), no("x"));
    EXPECT_EQ(con({"buscar", "-hj"}), no("-hj"));
    EXPECT_EQ(con({"buscar", "-jh"}), no("-jh"));
    EXPECT_EQ(con({"--help", "nada"}), "! no hay una orden \"nada\"\n(programa --help)");
}

TEST_F(ArgumentosDeLinea, WordsTooManyAreQuotedOneByOneAndTheMarkIsNone) {
    std::string cifras;
    const auto con = [&](const Palabras& palabras) {
        Argumentos linea("programa", "1", "");
        linea.orden("serie", "")
            .opcion(cifras,
                    {.nombre = "CIFRAS", .valor = "", .ayuda = "", .comprobar = {}, .obligatoria = true});
        const auto texto = linea.leer(palabras).texto;
        return texto.substr(0, texto.find('\n'));
    };
    EXPECT_EQ(con({"serie", "1", "2", "3"}), "no se entiende \"2\", \"3\"");
    EXPECT_EQ(con({"serie", "--", "1", "2"}), "no se entiende \"2\"");
    EXPECT_EQ(con({"serie", "1", "--", "2"}), "no se entiende \"2\"");
    EXPECT_EQ(con({"serie", "1", "--", "--"}), "no se entiende \"--\"");
    EXPECT_EQ(con({"serie", "--"}), "falta CIFRAS");
    EXPECT_EQ(con({"--", "serie", "1"}), "falta la orden: se escribe delante de --");
    EXPECT_EQ(con({"serie", "--", "--"}), "");
    EXPECT_EQ(cifras, "--");
}

TEST_F(ArgumentosDeLinea, WhatCannotBeShownIsMarkedWhereverItStands) {
    constexpr auto kQueja = "no se entiende \"--a\uFFFDb\uFFFD\"\n(programa convertir --help)";
    EXPECT_EQ(leer({"a", "--a\nb\x7f"}).texto, kQueja);
    EXPECT_EQ(leer({"a",
                    "--a\x1b"
                    "b\u009b"})
                  .texto,
              kQueja);
    EXPECT_EQ(leer({"a",
                    "--a\xff"
                    "b\u202e"})
                  .texto,
              kQueja);
    Argumentos linea("programa", "1", "");
    linea.orden("buscar", "");
    EXPECT_EQ(linea.leer({"bus\ncar"}).texto, "no hay una orden \"bus\uFFFDcar\"\n(programa --help)");
    EXPECT_EQ(linea.leer({"buscar", "[x\t", "\x1f"}).texto,
              "no se entiende \"[x\uFFFD\", \"\uFFFD\"\n(programa buscar --help)");
}

TEST_F(ArgumentosDeLinea, ANameThatBeginsLikeAnOptionGetsAdvice) {
    EXPECT_THAT(leer({"-a.rgt", "x.csv"}).texto,
                StartsWith("no se entiende \"-a.rgt\"; si es un archivo, escríbalo ./-a.rgt\n"));
    EXPECT_THAT(leer({"-helada.rgt", "x.csv"}).texto,
                StartsWith("no se entiende \"-helada.rgt\"; si es un archivo, escríbalo ./-helada.rgt\n"));
    EXPECT_THAT(leer({"a", "--bas=x.rgt"}).texto, StartsWith("no se entiende \"--bas=x.rgt\"\n"));
    exigirQueCorra({"./-a.rgt", "x.csv"});
    Argumentos linea("programa", "1", "");
    EXPECT_EQ(linea.leer({"-a.rgt"}).texto, "no se entiende \"-a.rgt\"\n(programa --help)");
}

TEST_F(ArgumentosDeLinea, WhatWasMisspeltIsToldBeforeWhatIsMissing) {
    EXPECT_THAT(leer({"--usuari", "x"}).texto, StartsWith("no se entiende \"--usuari"));
}

class NombreDeArchivo : public ArgumentosDeLinea, public testing::WithParamInterface<std::string> {};

TEST_P(NombreDeArchivo, IsTakenAsItStandsWhereverANameMayStand) {
    const auto& nombre = GetParam();
    exigirQueCorra({nombre, "b", "--en", nombre, "--usuario=" + nombre, "--com", nombre, "--com=" + nombre});
    EXPECT_THAT(archivos, ElementsAre(nombre, "b"));
    EXPECT_EQ(en, nombre);
    EXPECT_EQ(usuario, nombre);
    EXPECT_THAT(com, ElementsAre(nombre, nombre));
}

TEST_P(NombreDeArchivo, IsTakenAsItStandsBehindTheMark) {
    exigirQueCorra({"a", "--", GetParam(), "b"});
    EXPECT_THAT(archivos, ElementsAre("a", GetParam(), "b"));
}

INSTANTIATE_TEST_SUITE_P(Con, NombreDeArchivo,
                         testing::Values("[a,b]", "[a]", "[]", "[[a,b],[c]]", "[a", "a]", "a,b", "++", "{}",
                                         "%%", "buscar", "convertir", "\x1f[a,b]", "\x1f", "'a'", "\"a\"",
                                         "a=b", "#a", "ñandú", "a\nb", " "));

TEST_F(ArgumentosDeLinea, AValueMayBeAnythingBehindItsEqualsSign) {
    exigirQueCorra({"a", "--en=--", "--usuario=--en", "--com=-h", "--com=--com=[x]", "b"});
    EXPECT_EQ(en, "--");
    EXPECT_EQ(usuario, "--en");
    EXPECT_THAT(com, ElementsAre("-h", "--com=[x]"));
    EXPECT_THAT(archivos, ElementsAre("a", "b"));
}

TEST_F(ArgumentosDeLinea, ARepeatableOptionTakesOneWordAndLeavesTheOthers) {
    exigirQueCorra({"--com", "1=x", "a", "--com", "2=y", "b"});
    EXPECT_THAT(com, ElementsAre("1=x", "2=y"));
    EXPECT_THAT(archivos, ElementsAre("a", "b"));
}

TEST_F(ArgumentosDeLinea, WhatIsNotUnderstoodIsNamedAsItWasWritten) {
    const auto leida = leer({"--otra", "[a,b]"});
    EXPECT_EQ(leida.que, LineaLeida::Que::malUso);
    EXPECT_THAT(leida.texto, HasSubstr("\"--otra\""));
    EXPECT_THAT(leida.texto, testing::Not(HasSubstr("\x1f")));
    EXPECT_THAT(com, IsEmpty());
}

}  // namespace
}  // namespace telvane
