// The reader of sources must itself be able to find what it is there to find.
#include "tests/arquitectura/fuentes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace telvane::arquitectura {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(LectorDeFuentes, FindsEveryFormOfInclude) {
    EXPECT_THAT(
        leerInclusiones("#include \"a/b.h\"\n  #  include <vector>\n// #include \"no.h\"\nint include;\n"),
        ElementsAre("a/b.h", "vector"));
}

TEST(LectorDeFuentes, TheLayerIsTheFolderAndTheToolkitFoldersAreLayersOfTheirOwn) {
    EXPECT_EQ(capaDe("link/mscomm.h"), "link");
    EXPECT_EQ(capaDe("ui/qt/ventana.h"), "ui/qt");
    EXPECT_EQ(capaDe("ui/qtpies.h"), "ui");
    EXPECT_EQ(capaDe("vector"), "");
}

TEST(LectorDeFuentes, KnowsAHeaderOfTheToolkit) {
    for (const auto* inclusion : {"QWidget", "QtWidgets/QLabel", "QtGlobal", "qglobal.h", "QString"})
        EXPECT_TRUE(esDeQt(inclusion)) << inclusion;
    for (const auto* inclusion : {"ui/qt/ventana.h", "queue", "vector", "fmt/format.h"})
        EXPECT_FALSE(esDeQt(inclusion)) << inclusion;
}

TEST(LectorDeFuentes, FindsWhatAHeaderGivesANameTo) {
    EXPECT_THAT(leerNombres("namespace a {\n"
                            "struct Uno;\n"
                            "template <typename T>\n"
                            "struct Dos : Uno {\n"
                            "    struct Dentro {};\n"
                            "};\n"
                            "enum class Tres { x };\n"
                            "namespace b {\n"
                            "class Cuatro final\n"
                            "    : public Uno {\n"
                            "};\n"
                            "}  // namespace b\n"
                            "using Cinco = int;\n"
                            "inline constexpr std::array<int, 2> kSeis = {1, 2};\n"
                            "inline constexpr int kSiete{7};\n"
                            "struct Dos<int> {\n"
                            "};\n"
                            "int nada(Uno uno);\n"
                            "}  // namespace a\n"),
                ElementsAre("a::Dos", "a::Tres", "a::b::Cuatro", "a::Cinco", "a::kSeis", "a::kSiete"));
}

TEST(LectorDeFuentes, FindsACycleThroughSeveralFiles) {
    EXPECT_THAT(buscarCiclo({{"a.h", {"b.h"}}, {"b.h", {"vector", "c.h"}}, {"c.h", {"b.h"}}}),
                ElementsAre("b.h", "c.h", "b.h"));
    EXPECT_THAT(buscarCiclo({{"a.h", {"a.h"}}}), ElementsAre("a.h", "a.h"));
}

TEST(LectorDeFuentes, TwoWaysToOneFileAreNoCycle) {
    EXPECT_THAT(buscarCiclo({{"a.h", {"b.h", "c.h"}}, {"b.h", {"d.h"}}, {"c.h", {"d.h"}}, {"d.h", {}}}),
                IsEmpty());
}

}  // namespace
}  // namespace telvane::arquitectura
