#include "tests/caza/manual.h"

#include <algorithm>
#include <cctype>
#include <sstream>

#include "tests/apoyo/leer_todo.h"

namespace telvane {

namespace {

// "N", "COMN" and "ARCHIVO" stand for what changes; an option may stand for others.
bool esHueco(std::string_view palabra) {
    if (palabra.starts_with("--")) return true;
    const bool letras = std::ranges::any_of(palabra, [](unsigned char c) { return std::isupper(c) != 0; });
    return letras && std::ranges::none_of(palabra, [](unsigned char c) { return std::islower(c) != 0; });
}

std::string sinMarcas(std::string_view celda) {
    std::string texto;
    for (const char c : celda) {
        if (c != '`' && c != '*') texto += c;
    }
    for (const std::string_view hueco : {"…", "\"", "(", ")"}) {
        for (auto i = texto.find(hueco); i != std::string::npos; i = texto.find(hueco, i))
            texto.replace(i, hueco.size(), " / ");
    }
    return texto;
}

void agregarTrozos(std::string_view celda, std::vector<std::string>& trozos) {
    std::istringstream palabras(sinMarcas(celda));
    std::string trozo;
    const auto terminar = [&] {
        if (trozo.find(' ') != std::string::npos) trozos.push_back(trozo);
        trozo.clear();
    };
    for (std::string palabra; palabras >> palabra;) {
        if (palabra == "/" || esHueco(palabra)) {
            terminar();
            continue;
        }
        trozo += (trozo.empty() ? "" : " ") + palabra;
    }
    terminar();
}

}  // namespace

std::vector<std::string> trozosExplicados(std::string_view manual) {
    const auto desde = manual.find("\n## 13. ");
    std::istringstream lineas{std::string(manual.substr(desde, manual.find("\n## 14. ") - desde))};
    std::vector<std::string> trozos;
    for (std::string linea; std::getline(lineas, linea);) {
        const auto fin = linea.find(" | ");
        if (linea.starts_with("| ") && fin != std::string::npos)
            agregarTrozos(std::string_view(linea).substr(2, fin - 2), trozos);
    }
    return trozos;
}

bool estaExplicado(std::string_view mensaje) {
    static const auto kTrozos = trozosExplicados(leerTodo(TELVANE_MANUAL));
    std::string llano(mensaje);
    std::ranges::replace(llano, '\n', ' ');
    return std::ranges::any_of(kTrozos,
                               [&](const auto& trozo) { return llano.find(trozo) != std::string::npos; });
}

}  // namespace telvane
