// Every text that the programs can show stands in the manual's chapter of messages, with what to do.
#include <algorithm>
#include <array>
#include <cctype>
#include <filesystem>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/apoyo/leer_todo.h"
#include "tests/arquitectura/fuentes.h"
#include "tests/arquitectura/literales.h"

namespace telvane::arquitectura {
namespace {

using testing::ElementsAre;

bool esLetra(char c) {
    return std::isalpha(static_cast<unsigned char>(c)) != 0 || static_cast<unsigned char>(c) >= 0x80;
}

// Blanks and line ends count as one blank, marks of the manual's format not at all.
std::string llano(std::string_view texto) {
    std::string junto;
    for (const char c : texto) {
        if (c == '`' || c == '*') continue;
        const bool blanco = std::isspace(static_cast<unsigned char>(c)) != 0;
        if (!blanco) junto += c;
        if (blanco && !junto.empty() && junto.back() != ' ') junto += ' ';
    }
    return junto;
}

std::string capituloDeMensajes() {
    const auto manual = leerTodo(std::filesystem::path(RAIZ_PROYECTO) / "docs" / "manual.md");
    const auto desde = manual.find("\n## 13. Todos los mensajes");
    if (desde == std::string::npos) return "";
    return llano(std::string_view(manual).substr(desde, manual.find("\n## 14.") - desde));
}

// What stands between the values that are put into a text, and between its lines.
std::vector<std::string> pedazos(const std::string& texto) {
    std::vector<std::string> todos(1);
    bool hueco = false;
    for (const char c : texto) {
        if (c == '{' || c == '\n') todos.emplace_back();
        hueco = (hueco || c == '{') && c != '}';
        if (!hueco && c != '}' && c != '\n') todos.back() += c;
    }
    for (auto& pedazo : todos) {
        pedazo = llano(pedazo);
        const std::string_view adorno = " :;,.()/\"";
        const auto desde = pedazo.find_first_not_of(adorno);
        pedazo = desde == std::string::npos
                     ? ""
                     : pedazo.substr(desde, pedazo.find_last_not_of(adorno) + 1 - desde);
    }
    return todos;
}

std::size_t palabras(std::string_view texto) {
    std::size_t cuantas = 0;
    std::size_t letras = 0;
    for (const char c : texto) {
        if (c == ' ') letras = 0;
        if (esLetra(c) && ++letras == 2) ++cuantas;
    }
    return cuantas;
}

// Code that leads to a text that is no message: help of the console, captions and hints of a form, a menu.
bool llevaAOtraCosa(const std::string& contexto) {
    constexpr std::array<std::string_view, 6> kRutinas{".orden(",        ".bandera(",     ".pie(",
                                                       "set_help_flag(", "version_flag(", "addAction("};
    constexpr std::array<std::string_view, 4> kCampos{".ayuda =", ".valor =", ".caption =", ".hint ="};
    // A caption that changes names its control.
    const auto campo = [&](std::string_view cual) {
        const auto donde = contexto.rfind(cual);
        return donde != std::string::npos && (donde == 0 || contexto[donde - 1] == ' ');
    };
    return std::ranges::any_of(kRutinas, [&](auto r) { return contexto.find(r) != std::string::npos; }) ||
           std::ranges::any_of(kCampos, campo);
}

// Statements of a data base, and lines for a monitor.
bool esSql(std::string_view texto) {
    constexpr std::array<std::string_view, 31> kComienzos{
        "ORDER BY ",    "WITH RECURSIVE ", " ORDER BY ", "WHERE ",    "(to_timestamp(", "# HELP ",
        "SELECT ",      "INSERT ",         "UPDATE ",    "DELETE ",   "DROP ",          "CREATE ",
        "BEGIN",        "COPY ",           "ROLLBACK",   "COMMIT",    "PRAGMA ",        "VACUUM ",
        "SET ",         " AND ",           "SAVEPOINT ", "ALTER ",    "PRIMARY KEY",    "NOT NULL",
        "{0} BETWEEN ", "{}count(",        "length(",    "isfinite(", "LOCK TABLE ",    "; SELECT ",
        " WHERE "};
    while (texto.starts_with('\n')) texto.remove_prefix(1);
    return std::ranges::any_of(kComienzos, [&](auto comienzo) { return texto.starts_with(comienzo); });
}

// Contents of files and panes, which have chapters of their own, and what the other side reads.
const std::set<std::string>& archivosSinMensajes() {
    static const std::set<std::string> kArchivos{"data/informe.cpp", "live/marco_en_linea.cpp",
                                                 "loggerconfig/datos_config.cpp", "ui/forma_inicio.h",
                                                 "sistema/inhibidor_logind.cpp"};
    return kArchivos;
}

// Texts that tell nothing: names of folders, of kinds of files and of typefaces, titles, formats, the
// console's own line.
const std::set<std::string>& noSonMensajes() {
    static const std::set<std::string> kTextos{
        "hh:mm:ss tt",
        "# Ajustes regionales de Telvane",
        "datos base (.rgt)|.rgt",
        "datos excel (.CSV)|.CSV",
        "datos excel (.xls)|.xls",
        "HKEY_CURRENT_USER\\Control Panel\\International\\",
        "C:\\mis Documentos\\",
        "C:\\Mis Documentos\\",
        "Guardar archivo -",
        "Abrir archivo -",
        "Descarga de la memoria del registrador",
        "MS Sans Serif",
        "Courier New",
        "Acompañante de escritorio del registrador de una estación meteorológica automática",
        "El registrador desde la consola: buscarlo, leerlo, descargarlo y configurarlo",
        "El archivo histórico: las imágenes de muchas descargas y estaciones, durante años",
        // By these words it is known what a library means.
        "no password supplied",
        "private key",
        "channel binding",
        "starting up",
        "shutting down",
        "recovery mode",
        "not yet accepting",
        "not accepting",
        "could not translate host name",
        "Connection refused",
        "No such file or directory",
        "timeout expired",
        "Connection timed out",
        "No route to host",
        "closed the connection",
        "invalid response to SSL negotiation",
        "failed to map segment",
        "annot allocate",
    };
    return kTextos;
}

struct Mensaje {
    std::string archivo;
    std::string texto;

    auto operator<=>(const Mensaje&) const = default;
};

std::vector<Mensaje> mensajesDe(const std::string& archivo, std::string_view fuente) {
    std::vector<Mensaje> mensajes;
    for (const auto& literal : leerLiterales(fuente)) {
        // With a zero among them they are the bytes of a file.
        if (literal.texto.find('\0') != std::string::npos) continue;
        if (llevaAOtraCosa(literal.contexto) || esSql(literal.texto)) continue;
        // One word is a message only where it is printed or said; elsewhere it is a name.
        const bool dicho = literal.contexto.find("imprimir(") != std::string::npos ||
                           literal.contexto.find("avisar(") != std::string::npos;
        for (const auto& pedazo : pedazos(literal.texto)) {
            if (palabras(pedazo) >= (dicho ? 1U : 2U)) mensajes.push_back({archivo, pedazo});
        }
    }
    return mensajes;
}

std::set<Mensaje> todosLosMensajes() {
    std::set<Mensaje> todos;
    auto carpetas = carpetasConFuentes(RAIZ_PROYECTO);
    // The simulator's messages have a chapter of their own; what the report says stands on its page.
    for (const auto* otra : {"tests", "bench", "fuzz", "simulator", "informe"}) carpetas.erase(otra);
    for (const auto& [archivo, inclusiones] : leerFuentes(RAIZ_PROYECTO, carpetas)) {
        if (archivosSinMensajes().contains(archivo)) continue;
        const auto suyos = mensajesDe(archivo, leerTodo(std::filesystem::path(RAIZ_PROYECTO) / archivo));
        todos.insert(suyos.begin(), suyos.end());
    }
    return todos;
}

TEST(Mensajes, EveryOneStandsInTheManual) {
    const auto capitulo = capituloDeMensajes();
    const auto mensajes = todosLosMensajes();
    ASSERT_GT(mensajes.size(), 150U);
    for (const auto& mensaje : mensajes) {
        if (noSonMensajes().contains(mensaje.texto)) continue;
        EXPECT_NE(capitulo.find(mensaje.texto), std::string::npos)
            << mensaje.archivo << " shows \"" << mensaje.texto << "\", which chapter 13 does not explain";
    }
}

// A message without a next step leaves its reader alone.
TEST(Mensajes, EachOneHasItsNextStep) {
    const auto manual = leerTodo(std::filesystem::path(RAIZ_PROYECTO) / "docs" / "manual.md");
    const auto desde = manual.find("\n## 13. ");
    std::istringstream lineas(manual.substr(desde, manual.find("\n## 14. ") - desde));
    std::size_t cuantas = 0;
    for (std::string linea; std::getline(lineas, linea);) {
        if (!linea.starts_with("| ")) continue;
        ++cuantas;
        const auto medio = linea.find(" | ");
        ASSERT_NE(medio, std::string::npos) << linea;
        EXPECT_TRUE(linea.ends_with(" |")) << linea;
        const auto que = linea.substr(medio + 3, linea.size() - medio - 5);
        EXPECT_GT(std::ranges::count_if(que, esLetra), 4) << linea;
    }
    EXPECT_GT(cuantas, 100U);
}

TEST(Mensajes, TheExceptionsAreStillThere) {
    std::set<std::string> vistos;
    for (const auto& mensaje : todosLosMensajes()) vistos.insert(mensaje.texto);
    for (const auto& texto : noSonMensajes()) EXPECT_TRUE(vistos.contains(texto)) << texto;
}

TEST(Mensajes, TheReaderFindsATextWhereverItIsShown) {
    const auto de = [](std::string_view fuente) {
        std::vector<std::string> textos;
        for (const auto& mensaje : mensajesDe("x.cpp", fuente)) textos.push_back(mensaje.texto);
        return textos;
    };
    EXPECT_THAT(de("f(\"no queda \"\n  \"nada\"); // \"un comentario\"\n"), ElementsAre("no queda nada"));
    EXPECT_THAT(de("throw E(fmt::format(\"el puerto {} no \\\"existe\\\": {:02x}\\r\\notra línea\", n));"),
                ElementsAre("el puerto", "no \"existe", "otra línea"));
    EXPECT_THAT(de("forma.imprimir(\"falta\"); f(\"falta\");"), ElementsAre("falta"));
    EXPECT_THAT(de("#include \"una cosa\"\nint n = 10'000; const char c = '\"'; g(\"dos cosas\");"),
                ElementsAre("dos cosas"));
    EXPECT_THAT(de("orden.bandera(x, \"--y\", \"Una ayuda\"); Control a{{.caption = \"Un rótulo\"}};"),
                testing::IsEmpty());
    EXPECT_THAT(de("forma.Label1.caption = \"comienzo transmision\";"), ElementsAre("comienzo transmision"));
    EXPECT_THAT(de("f(\"no\\x20queda\\040nada\"); constexpr std::string_view k{\"una marca\\0\", 10};"),
                ElementsAre("no queda nada"));
}

}  // namespace
}  // namespace telvane::arquitectura
