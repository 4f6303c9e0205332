// What the texts for developers name is there: files, presets, variables, programs and tests.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "platform/recorte.h"
#include "tests/apoyo/leer_todo.h"
#include "tests/arquitectura/fuentes.h"

namespace telvane::arquitectura {
namespace {

namespace fs = std::filesystem;

const fs::path kRaiz = RAIZ_PROYECTO;

using Nombres = std::set<std::string>;

// Every text in English, by its name. The user's manual has tests of its own.
const std::map<std::string, std::string>& textos() {
    static const auto kTextos = [] {
        std::map<std::string, std::string> todos;
        for (const auto* uno : {"README.md", "CONTRIBUTING.md"}) todos[uno] = leerTodo(kRaiz / uno);
        for (const auto& entrada : fs::directory_iterator(kRaiz / "docs")) {
            const auto nombre = entrada.path().filename().string();
            if (nombre.ends_with(".md") && nombre != "manual.md")
                todos["docs/" + nombre] = leerTodo(entrada.path());
        }
        return todos;
    }();
    return kTextos;
}

std::vector<std::string> hallados(const std::string& texto, const char* que) {
    const std::regex expresion(que);
    std::vector<std::string> todos;
    for (std::sregex_iterator uno(texto.begin(), texto.end(), expresion), fin; uno != fin; ++uno)
        todos.push_back((*uno)[1]);
    return todos;
}

// What stands between backticks in a line; a fenced block is no text.
std::vector<std::string> citas(const std::string& texto) {
    std::istringstream lineas(texto);
    std::string fuera;
    bool dentro = false;
    for (std::string linea; std::getline(lineas, linea);) {
        if (linea.starts_with("```")) {
            dentro = !dentro;
        } else if (!dentro) {
            fuera += linea + '\n';
        }
    }
    return hallados(fuera, "`([^`\n]+)`");
}

// "a/{b,c}.h" is "a/b.h" and "a/c.h".
std::vector<std::string> desplegado(const std::string& cita) {
    static const std::regex kLlaves(R"(^(.*)\{([^{}]*)\}(.*)$)");
    std::smatch partes;
    if (!std::regex_match(cita, partes, kLlaves)) return {cita};
    std::vector<std::string> todos;
    const auto entreLlaves = partes[2].str();
    for (const auto medio : telvane::palabras(entreLlaves, ",")) {
        const auto otros = desplegado(partes[1].str() + std::string(medio) + partes[3].str());
        todos.insert(todos.end(), otros.begin(), otros.end());
    }
    return todos;
}

// A pattern with stars as a whole word's expression.
std::regex expresionDe(std::string_view patron) {
    std::string expresion;
    for (const char c : patron) {
        if (c == '*') {
            expresion += ".*";
        } else if (std::string_view(".+()[]").find(c) != std::string_view::npos) {
            expresion += {'\\', c};
        } else {
            expresion += c;
        }
    }
    return std::regex(expresion);
}

bool algunoEs(const Nombres& nombres, std::string_view patron) {
    const auto expresion = expresionDe(patron);
    return std::ranges::any_of(nombres, [&](const auto& n) { return std::regex_match(n, expresion); });
}

// Files and folders of the project from its root, and each file's bare name; nothing that was built.
const Nombres& archivos() {
    static const auto kArchivos = [] {
        Nombres todos;
        for (fs::recursive_directory_iterator i(kRaiz), fin; i != fin; ++i) {
            const auto nombre = i->path().filename().string();
            const bool ajeno = nombre == "build" || nombre == ".git" || nombre == "salida" ||
                               fs::exists(i->path() / "CMakeCache.txt");
            if (ajeno) {
                i.disable_recursion_pending();
                continue;
            }
            todos.insert(i->path().lexically_relative(kRaiz).generic_string());
            if (i->is_regular_file()) todos.insert(nombre);
        }
        return todos;
    }();
    return kArchivos;
}

// Whether it is meant as a path of the project, and not of a system, a build or an example.
bool esRuta(const std::string& cita) {
    static const std::regex kRuta(R"([\w.][\w./{},*-]*)");
    static const std::regex kFuente(R"([\w*]+\.(h|cpp))");
    if (!std::regex_match(cita, kRuta) || cita.find("NAME") != std::string::npos) return false;
    const auto primera = cita.substr(0, cita.find('/'));
    if (primera == cita) return std::regex_match(cita, kFuente);
    return primera != "build" && fs::is_directory(kRaiz / primera);
}

TEST(Documentos, EveryFileThatIsNamedIsThere) {
    std::size_t vistas = 0;
    for (const auto& [texto, contenido] : textos()) {
        for (const auto& cita : citas(contenido)) {
            if (!esRuta(cita)) continue;
            for (auto ruta : desplegado(cita)) {
                ++vistas;
                if (ruta.ends_with('/')) ruta.pop_back();
                if (ruta.starts_with("./")) ruta.erase(0, 2);
                EXPECT_TRUE(algunoEs(archivos(), ruta)) << texto << " names " << cita;
            }
        }
        for (const auto& enlace : hallados(contenido, R"(\]\(([^)#:]+)[)#])"))
            EXPECT_TRUE(fs::exists((kRaiz / texto).parent_path() / enlace)) << texto << " links " << enlace;
    }
    EXPECT_GT(vistas, 150U);
}

TEST(Documentos, EveryPresetThatIsNamedIsOne) {
    const auto ajustes = leerTodo(kRaiz / "CMakePresets.json");
    for (const auto& [texto, contenido] : textos())
        for (const auto& preset : hallados(contenido, R"(--preset (\w+))"))
            EXPECT_NE(ajustes.find("\"name\": \"" + preset + '"'), std::string::npos)
                << texto << " names " << preset;
}

TEST(Documentos, EveryVariableThatIsNamedIsReadSomewhere) {
    Nombres leidas;
    for (const auto& archivo : archivos()) {
        const auto ruta = kRaiz / archivo;
        if (archivo.ends_with(".md") || !fs::is_regular_file(ruta)) continue;
        for (const auto& variable : hallados(leerTodo(ruta), R"(\b(TELVANE_[A-Z_]+)\b)"))
            leidas.insert(variable);
    }
    for (const auto& [texto, contenido] : textos())
        for (const auto& variable : hallados(contenido, R"(\b(TELVANE_[A-Z_]+)\b)"))
            EXPECT_TRUE(leidas.contains(variable)) << texto << " names " << variable;
}

TEST(Documentos, TheTableOfFoldersHasEachOfThem) {
    const auto& tabla = textos().at("docs/architecture.md");
    for (const auto& carpeta : carpetasConFuentes(kRaiz))
        EXPECT_NE(tabla.find('`' + carpeta + "/`"), std::string::npos) << carpeta;
}

// Names of the tests in a source, each as its program would list it: with the prefix and the number of a
// parameter where it has one.
Nombres pruebasDe(const fs::path& fuente) {
    static const std::regex kDeclaracion(R"(\n(TEST|TEST_F|TEST_P|RC_GTEST_PROP)\(\s*(\w+),\s*"?(\w+))");
    static const std::regex kJuego(R"(\nINSTANTIATE_TEST_SUITE_P\(\s*(\w+),\s*(\w+))");
    const auto texto = leerTodo(fuente);
    std::multimap<std::string, std::string> prefijos;
    for (std::sregex_iterator uno(texto.begin(), texto.end(), kJuego), fin; uno != fin; ++uno)
        prefijos.emplace((*uno)[2], (*uno)[1].str() + '/');
    Nombres todas;
    for (std::sregex_iterator una(texto.begin(), texto.end(), kDeclaracion), fin; una != fin; ++una) {
        const auto nombre = (*una)[2].str() + '.' + (*una)[3].str();
        if ((*una)[1] != "TEST_P") todas.insert(nombre);
        const auto [desde, hasta] = prefijos.equal_range((*una)[2]);
        for (auto prefijo = desde; prefijo != hasta; ++prefijo) todas.insert(prefijo->second + nombre + "/0");
    }
    return todas;
}

// The test programs with their tests, and all tests as ctest knows them.
struct Pruebas {
    std::map<std::string, Nombres> programas;
    Nombres todas;
};

const Pruebas& pruebas() {
    static const auto kPruebas = [] {
        Pruebas leidas;
        std::ifstream lista(ARCHIVO_PRUEBAS);
        for (std::string linea; std::getline(lista, linea);) {
            std::istringstream trozos(linea);
            std::string nombre;
            trozos >> nombre;
            leidas.todas.insert(nombre);
            if (!nombre.starts_with("prueba_")) continue;
            auto& suyas = leidas.programas[nombre];
            for (std::string fuente; trozos >> fuente;) suyas.merge(pruebasDe(fuente));
            for (const auto& una : suyas)
                leidas.todas.insert(nombre.substr(nombre.find('_') + 1) + '.' + una);
        }
        return leidas;
    }();
    return kPruebas;
}

// The pieces of a filter that no test is meant by.
std::vector<std::string> vanos(std::string filtro, const Nombres& suyas) {
    std::vector<std::string> todos;
    for (auto& c : filtro)
        if (c == '-') c = ':';
    for (const auto pieza : telvane::palabras(filtro, ":"))
        if (!algunoEs(suyas, pieza)) todos.emplace_back(pieza);
    return todos;
}

// "prueba_x --gtest_filter=Y"; "..." stands for the program named last.
TEST(Documentos, EveryFilterMeansATestOfItsProgram) {
    if (!PRUEBAS_COMPLETAS) GTEST_SKIP() << "not all of the test programs are built here";
    const std::regex filtro(R"((?:(?:prueba|saneada)_(\w+)|\.\.\.)\s--gtest_filter='?([^'`\s]+))");
    std::size_t vistos = 0;
    for (const auto& [texto, contenido] : textos()) {
        std::string programa;
        for (std::sregex_iterator uno(contenido.begin(), contenido.end(), filtro), fin; uno != fin; ++uno) {
            if ((*uno)[1].matched) programa = "prueba_" + (*uno)[1].str();
            ++vistos;
            ASSERT_TRUE(pruebas().programas.contains(programa)) << texto << " names " << programa;
            for (const auto& pieza : vanos((*uno)[2], pruebas().programas.at(programa)))
                ADD_FAILURE() << texto << ": " << programa << " has no " << pieza;
        }
    }
    EXPECT_GT(vistos, 20U);
}

TEST(Documentos, EveryProgramAndTestThatIsNamedIsThere) {
    if (!PRUEBAS_COMPLETAS) GTEST_SKIP() << "not all of the test programs are built here";
    for (const auto& [texto, contenido] : textos()) {
        for (const auto& programa : hallados(contenido, R"(\b(?:prueba|saneada)_([a-z]\w*))"))
            EXPECT_TRUE(pruebas().programas.contains("prueba_" + programa)) << texto << " names " << programa;
        for (const auto& patron : hallados(contenido, R"(ctest [^`\n]*-R '?([^'`\s)]+))")) {
            const std::regex expresion(patron);
            EXPECT_TRUE(std::ranges::any_of(
                pruebas().todas, [&](const auto& una) { return std::regex_search(una, expresion); }))
                << texto << ": no test is meant by -R " << patron;
        }
    }
}

TEST(Documentos, TheReaderUnfoldsAndFindsWhatIsMeant) {
    EXPECT_EQ(desplegado("a/{b,c}.{h,cpp}"),
              (std::vector<std::string>{"a/b.h", "a/c.h", "a/b.cpp", "a/c.cpp"}));
    EXPECT_EQ(citas("x `uno`\n```\n`no`\n```\n`dos`"), (std::vector<std::string>{"uno", "dos"}));
    EXPECT_TRUE(algunoEs({"S.Una"}, "*Una"));
    EXPECT_FALSE(algunoEs({"S.Una"}, "Una*"));
    EXPECT_EQ(vanos("*Una:Otra*-S.*", {"S.Una"}), std::vector<std::string>{"Otra*"});
}

}  // namespace
}  // namespace telvane::arquitectura
