#include "tests/arquitectura/fuentes.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <regex>
#include <sstream>

#include "tests/apoyo/leer_todo.h"

namespace telvane::arquitectura {

namespace {

bool esFuente(const std::filesystem::path& ruta) {
    return ruta.extension() == ".h" || ruta.extension() == ".cpp";
}

bool esArbolDeConstruccion(const std::filesystem::path& carpeta) {
    return carpeta.filename() == "build" || std::filesystem::exists(carpeta / "CMakeCache.txt");
}

// Depth first: a file met again while it is still on the path closes a cycle.
class BuscadorDeCiclos {
   public:
    explicit BuscadorDeCiclos(const Grafo& grafo) : grafo_(grafo) {}

    std::vector<std::string> buscar() {
        for (const auto& [archivo, inclusiones] : grafo_)
            if (visitar(archivo)) return camino_;
        return {};
    }

   private:
    bool visitar(const std::string& archivo) {
        const auto nodo = grafo_.find(archivo);
        if (nodo == grafo_.end() || vistos_.contains(archivo)) return false;
        const auto anterior = std::ranges::find(camino_, archivo);
        if (anterior != camino_.end()) {
            camino_.erase(camino_.begin(), anterior);
            camino_.push_back(archivo);
            return true;
        }
        camino_.push_back(archivo);
        for (const auto& inclusion : nodo->second)
            if (visitar(inclusion)) return true;
        camino_.pop_back();
        vistos_.insert(archivo);
        return false;
    }

    const Grafo& grafo_;
    std::set<std::string> vistos_;
    std::vector<std::string> camino_;
};

}  // namespace

Inclusiones leerInclusiones(std::string_view texto) {
    static const std::regex kInclusion(R"(^[ \t]*#[ \t]*include[ \t]*["<]([^">]+)[">])");
    Inclusiones inclusiones;
    std::istringstream lineas{std::string(texto)};
    for (std::string linea; std::getline(lineas, linea);) {
        std::smatch partes;
        if (std::regex_search(linea, partes, kInclusion)) inclusiones.push_back(partes[1]);
    }
    return inclusiones;
}

std::vector<std::string> leerNombres(std::string_view cabecera) {
    static const std::regex kApertura(R"((?:inline )?namespace ([\w:]*) ?\{)");
    static const std::regex kNombre(
        R"((?:struct|class|enum|enum class|union) (\w+)(?: final)?(?: :.*)?(?: \{.*)?)"
        R"(|(?:using|concept) (\w+) =.*|inline const(?:expr)? .*?\b(k[A-Z]\w*)(?: =|\{|;).*)");
    std::vector<std::string> espacios;
    std::vector<std::string> nombres;
    std::istringstream lineas{std::string(cabecera)};
    for (std::string linea; std::getline(lineas, linea);) {
        std::smatch partes;
        if (std::regex_match(linea, partes, kApertura)) {
            espacios.push_back(partes[1].str() + "::");
        } else if (linea.starts_with("}  // namespace")) {
            espacios.pop_back();
        } else if (std::regex_match(linea, partes, kNombre)) {
            std::string entero;
            for (const auto& espacio : espacios) entero += espacio;
            nombres.push_back(entero + partes[1].str() + partes[2].str() + partes[3].str());
        }
    }
    return nombres;
}

Grafo leerFuentes(const std::filesystem::path& raiz, const std::set<std::string>& carpetas) {
    Grafo grafo;
    for (const auto& carpeta : carpetas)
        for (const auto& entrada : std::filesystem::recursive_directory_iterator(raiz / carpeta))
            if (entrada.is_regular_file() && esFuente(entrada.path()))
                grafo[entrada.path().lexically_relative(raiz).generic_string()] =
                    leerInclusiones(leerTodo(entrada.path()));
    return grafo;
}

std::set<std::string> carpetasConFuentes(const std::filesystem::path& raiz) {
    std::set<std::string> carpetas;
    for (const auto& entrada : std::filesystem::directory_iterator(raiz)) {
        const auto nombre = entrada.path().filename().string();
        if (!entrada.is_directory() || nombre.front() == '.' || esArbolDeConstruccion(entrada.path()))
            continue;
        if (!leerFuentes(raiz, {nombre}).empty()) carpetas.insert(nombre);
    }
    return carpetas;
}

std::string capaDe(std::string_view archivo) {
    const auto corte = archivo.find('/');
    if (corte == std::string_view::npos) return {};
    const auto carpeta = archivo.substr(0, corte);
    const bool conQt = archivo.substr(corte).starts_with("/qt/");
    return std::string(carpeta) + (conQt ? "/qt" : "");
}

bool esDeQt(std::string_view inclusion) {
    static const std::regex kQt(R"((Qt[A-Z]\w*/.*|Q[A-Z]\w*|Qt\w*|q[a-z]+\.h))");
    return std::regex_match(inclusion.begin(), inclusion.end(), kQt);
}

std::vector<std::string> buscarCiclo(const Grafo& grafo) {
    return BuscadorDeCiclos(grafo).buscar();
}

}  // namespace telvane::arquitectura
