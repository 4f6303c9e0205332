// The sources of the project as a graph of includes.
#pragma once

#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace telvane::arquitectura {

// What one file includes, in order, as written between the quotes or angle brackets.
using Inclusiones = std::vector<std::string>;
Inclusiones leerInclusiones(std::string_view texto);

// File (relative to the root, "link/mscomm.h") to what it includes. Only .h and .cpp below the given folders.
using Grafo = std::map<std::string, Inclusiones>;
Grafo leerFuentes(const std::filesystem::path& raiz, const std::set<std::string>& carpetas);

// Folders directly below the root that hold a .h or .cpp somewhere; hidden ones and build trees left out.
std::set<std::string> carpetasConFuentes(const std::filesystem::path& raiz);

// "link" for link/mscomm.h, "ui/qt" for ui/qt/ventana.h; empty for a file that lies in no folder.
std::string capaDe(std::string_view archivo);

bool esDeQt(std::string_view inclusion);

// What a header gives a name to at the level of a namespace, "telvane::Paso": types, aliases, concepts and
// constants. It goes by lines, as the formatter leaves them. What is only announced does not count.
std::vector<std::string> leerNombres(std::string_view cabecera);

// A chain of files in which each includes the next and the last is the first again; empty: there is none.
std::vector<std::string> buscarCiclo(const Grafo& grafo);

}  // namespace telvane::arquitectura
