// The arrows of docs/architecture.md, held: an include or a link against them fails here.
#include <array>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <regex>
#include <set>
#include <sstream>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/apoyo/leer_todo.h"
#include "tests/arquitectura/fuentes.h"

namespace telvane::arquitectura {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

using Capas = std::set<std::string>;

// Each layer and the layers it may know. The simulator knows the layout of a record and what a
// file is, no decoder.
const std::map<std::string, Capas>& flechas() {
    static const std::map<std::string, Capas> kFlechas{
        {"platform", {}},
        {"sistema", {"platform"}},
        {"consola", {"platform"}},
        {"ui", {"platform"}},
        {"regional", {"platform", "ui"}},
        {"link", {"platform", "ui"}},
        {"live", {"platform", "ui", "regional", "link"}},
        {"loggerconfig", {"platform", "ui", "regional", "link"}},
        {"data", {"platform", "ui", "regional", "link", "loggerconfig"}},
        {"serie_temporal", {"platform", "ui", "regional", "link", "loggerconfig", "data"}},
        {"calidad", {"platform", "ui", "regional", "link", "loggerconfig", "data", "serie_temporal"}},
        {"informe",
         {"platform", "ui", "regional", "link", "loggerconfig", "data", "serie_temporal", "calidad"}},
        {"app", {"platform", "ui", "regional", "link", "live", "loggerconfig", "data"}},
        {"simulator", {"platform", "link", "loggerconfig", "data"}},
        {"cli", {"platform", "sistema", "consola", "ui", "regional", "link", "live", "loggerconfig", "data"}},
        {"historico",
         {"platform", "consola", "ui", "regional", "link", "loggerconfig", "data", "serie_temporal",
          "calidad", "informe"}},
        {"ui/qt", {"platform", "ui"}},
        {"app/qt", {"platform", "sistema", "ui", "ui/qt", "regional", "link", "data", "app"}},
    };
    return kFlechas;
}

// Folders of code that is no part of the product: they may know everything, and nothing of it knows them.
const Capas kAlrededor{"tests", "bench", "fuzz"};

const Grafo& producto() {
    static const Grafo kProducto = [] {
        Capas carpetas;
        for (const auto& [capa, conoce] : flechas()) carpetas.insert(capa.substr(0, capa.find('/')));
        return leerFuentes(RAIZ_PROYECTO, carpetas);
    }();
    return kProducto;
}

bool puedeConocer(const std::string& capa, const std::string& otra) {
    return capa == otra || flechas().at(capa).contains(otra);
}

// One built target: its folder, its name, and what it links.
struct Objetivo {
    std::string capa;
    std::string nombre;
    std::vector<std::string> enlaza;
};

std::vector<Objetivo> objetivos() {
    std::vector<Objetivo> todos;
    std::ifstream archivo(ARCHIVO_ENLACES);
    for (std::string linea; std::getline(archivo, linea);) {
        std::istringstream palabras(linea);
        Objetivo objetivo;
        palabras >> objetivo.capa >> objetivo.nombre;
        for (std::string biblioteca; palabras >> biblioteca;) objetivo.enlaza.push_back(biblioteca);
        todos.push_back(objetivo);
    }
    return todos;
}

std::string salidaDe(const std::string& orden) {
    const std::unique_ptr<FILE, int (*)(FILE*)> tubo(popen(orden.c_str(), "r"), pclose);
    std::string salida;
    std::array<char, 4096> trozo{};
    while (tubo && std::fgets(trozo.data(), trozo.size(), tubo.get())) salida += trozo.data();
    return salida;
}

TEST(Arquitectura, EveryFolderWithSourcesHasItsArrowsDeclared) {
    for (const auto& carpeta : carpetasConFuentes(RAIZ_PROYECTO))
        EXPECT_TRUE(flechas().contains(carpeta) || kAlrededor.contains(carpeta)) << carpeta;
    for (const auto& [archivo, inclusiones] : producto())
        EXPECT_TRUE(flechas().contains(capaDe(archivo))) << archivo;
}

TEST(Arquitectura, TheDeclaredArrowsHaveNoCycle) {
    Grafo capas;
    for (const auto& [capa, conoce] : flechas()) capas[capa] = {conoce.begin(), conoce.end()};
    EXPECT_THAT(buscarCiclo(capas), IsEmpty());
}

TEST(Arquitectura, IncludesFollowTheArrows) {
    ASSERT_GT(producto().size(), 50U);
    for (const auto& [archivo, inclusiones] : producto()) {
        for (const auto& inclusion : inclusiones) {
            if (!producto().contains(inclusion)) continue;
            EXPECT_TRUE(puedeConocer(capaDe(archivo), capaDe(inclusion)))
                << archivo << " includes " << inclusion;
        }
    }
}

TEST(Arquitectura, TheProductIncludesNoTestBenchmarkOrFuzzer) {
    for (const auto& [archivo, inclusiones] : producto())
        for (const auto& inclusion : inclusiones)
            EXPECT_FALSE(kAlrededor.contains(capaDe(inclusion))) << archivo << " includes " << inclusion;
}

TEST(Arquitectura, HeadersOfTheProjectAreNamedFromItsRoot) {
    for (const auto& [archivo, inclusiones] : producto()) {
        const auto carpeta = archivo.substr(0, archivo.rfind('/') + 1);
        for (const auto& inclusion : inclusiones)
            EXPECT_FALSE(producto().contains(carpeta + inclusion)) << archivo << " includes " << inclusion;
    }
    const auto pruebas = leerFuentes(RAIZ_PROYECTO, kAlrededor);
    for (const auto& [archivo, inclusiones] : pruebas) {
        const auto carpeta = archivo.substr(0, archivo.rfind('/') + 1);
        for (const auto& inclusion : inclusiones) {
            EXPECT_FALSE(pruebas.contains("tests/" + inclusion)) << archivo << " includes " << inclusion;
            EXPECT_FALSE(pruebas.contains(carpeta + inclusion)) << archivo << " includes " << inclusion;
        }
    }
}

TEST(Arquitectura, OnlyTheWindowIncludesTheToolkit) {
    for (const auto& [archivo, inclusiones] : producto())
        for (const auto& inclusion : inclusiones)
            EXPECT_TRUE(!esDeQt(inclusion) || capaDe(archivo).ends_with("/qt"))
                << archivo << " includes " << inclusion;
}

TEST(Arquitectura, NoFileIncludesItselfOverOthers) {
    EXPECT_THAT(buscarCiclo(producto()), IsEmpty());
    EXPECT_THAT(buscarCiclo(leerFuentes(RAIZ_PROYECTO, kAlrededor)), IsEmpty());
}

// Two of a name are an undefined program as soon as one file comes to know both headers, or one program both
// folders.
TEST(Arquitectura, ANameOfAHeaderStandsForOneThing) {
    auto carpetas = kAlrededor;
    for (const auto& [capa, conoce] : flechas()) carpetas.insert(capa.substr(0, capa.find('/')));
    std::map<std::string, std::string> primero;
    for (const auto& [archivo, inclusiones] : leerFuentes(RAIZ_PROYECTO, carpetas)) {
        if (!archivo.ends_with(".h")) continue;
        for (const auto& nombre : leerNombres(leerTodo(std::filesystem::path(RAIZ_PROYECTO) / archivo))) {
            const auto [este, nuevo] = primero.emplace(nombre, archivo);
            EXPECT_TRUE(nuevo || este->second == archivo)
                << nombre << " in " << este->second << " and in " << archivo;
        }
    }
    EXPECT_GT(primero.size(), 400U);
}

TEST(Arquitectura, EveryTestIsNamedAsASentenceInUpperCamel) {
    const std::regex declaracion(R"(\n(?:TEST|TEST_F|TEST_P|RC_GTEST_PROP)\(\s*(\w+),\s*"?(\w+))");
    std::size_t vistas = 0;
    for (const auto& [archivo, inclusiones] : leerFuentes(RAIZ_PROYECTO, {"tests"})) {
        const auto texto = leerTodo(std::filesystem::path(RAIZ_PROYECTO) / archivo);
        for (std::sregex_iterator una(texto.begin(), texto.end(), declaracion), fin; una != fin; ++una) {
            ++vistas;
            EXPECT_TRUE(std::regex_match((*una)[2].str(), std::regex("[A-Z][A-Za-z0-9]*")))
                << archivo << ": " << (*una)[1] << '.' << (*una)[2];
        }
    }
    EXPECT_GT(vistas, 500U);
}

TEST(Arquitectura, TargetsLinkAlongTheArrows) {
    std::map<std::string, std::string> capaDeObjetivo;
    for (const auto& objetivo : objetivos()) capaDeObjetivo[objetivo.nombre] = objetivo.capa;
    ASSERT_TRUE(capaDeObjetivo.contains("telvane_data"));
    for (const auto& objetivo : objetivos()) {
        for (const auto& biblioteca : objetivo.enlaza) {
            const auto otra = capaDeObjetivo.find(biblioteca);
            if (otra == capaDeObjetivo.end()) continue;
            EXPECT_TRUE(puedeConocer(objetivo.capa, otra->second))
                << objetivo.nombre << " links " << biblioteca;
        }
    }
}

TEST(Arquitectura, OnlyTheWindowLinksTheToolkit) {
    for (const auto& objetivo : objetivos())
        for (const auto& biblioteca : objetivo.enlaza)
            EXPECT_TRUE(!biblioteca.starts_with("Qt") || objetivo.capa.ends_with("/qt"))
                << objetivo.nombre << " links " << biblioteca;
}

// The dynamic linker has the last word: what it would load, over every library in between.
TEST(Arquitectura, TheConsoleProgramsLoadNoToolkitLibrary) {
    for (const std::string programa : {PROGRAMA_CLI, PROGRAMA_SIM, PROGRAMA_HISTORICO}) {
        const auto bibliotecas = salidaDe("ldd '" + programa + "'");
        EXPECT_THAT(bibliotecas, HasSubstr("libc.so")) << programa;
        EXPECT_THAT(bibliotecas, Not(HasSubstr("libQt"))) << programa;
    }
}

}  // namespace
}  // namespace telvane::arquitectura
