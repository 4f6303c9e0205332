#include "tests/e2e/datos_guardados.h"

#include <cctype>

#include "tests/apoyo/leer_todo.h"

namespace telvane {

namespace {

constexpr std::string_view kFin = "\r\n";
constexpr std::string_view kMomento = "proceso realizado el ";

bool esMuestra(const std::string& linea) {
    return linea.size() > 2 && std::isdigit(static_cast<unsigned char>(linea[0])) != 0 && linea[2] == '/';
}

std::vector<std::string> lineasDe(const std::string& texto) {
    std::vector<std::string> lineas;
    std::size_t desde = 0;
    for (auto fin = texto.find(kFin); fin != std::string::npos; fin = texto.find(kFin, desde)) {
        lineas.push_back(texto.substr(desde, fin - desde));
        desde = fin + kFin.size();
    }
    return lineas;
}

}  // namespace

ArchivoCsv leerCsv(const std::filesystem::path& ruta) {
    ArchivoCsv csv;
    for (const auto& linea : lineasDe(leerTodo(ruta))) {
        if (csv.columnas.empty() && linea.starts_with("Fecha,")) {
            csv.columnas = linea;
        } else if (csv.columnas.empty()) {
            csv.encabezado.push_back(linea);
        } else if (esMuestra(linea)) {
            csv.muestras.push_back(linea);
        } else {
            csv.resto += linea + std::string(kFin);
        }
    }
    return csv;
}

std::string sinMomento(const std::filesystem::path& ruta) {
    std::string texto;
    for (const auto& linea : lineasDe(leerTodo(ruta))) {
        if (!linea.starts_with(kMomento)) texto += linea + std::string(kFin);
    }
    return texto;
}

}  // namespace telvane
