// Words of a command line that the options library has a meaning of its own for.
#include "platform/argumentos.h"

#include <optional>
#include <string>
#include <vector>

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
