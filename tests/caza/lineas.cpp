#include "tests/caza/lineas.h"

#include <array>
#include <map>
#include <sstream>
#include <stdexcept>

namespace telvane {

namespace {

std::string ayuda(const std::vector<std::string>& orden) {
    Proceso proceso(orden);
    if (proceso.terminar() != 0) throw std::runtime_error("--help: " + proceso.errores());
    return proceso.salida();
}

// The first words of the lines that are indented by two blanks.
std::vector<std::vector<std::string>> renglones(const std::string& texto) {
    std::vector<std::vector<std::string>> lista;
    std::istringstream lineas(texto);
    for (std::string linea; std::getline(lineas, linea);) {
        if (linea.size() < 3 || linea.compare(0, 2, "  ") != 0 || linea[2] == ' ') continue;
        std::istringstream palabras(linea.substr(0, linea.find("  ", 2)));
        lista.emplace_back();
        for (std::string palabra; palabras >> palabra;) lista.back().push_back(palabra);
    }
    return lista;
}

std::vector<OpcionDeclarada> opcionesDe(const std::string& texto) {
    std::vector<OpcionDeclarada> opciones;
    for (const auto& palabras : renglones(texto)) {
        const auto& nombre = palabras.front();
        const bool conGuiones = nombre.starts_with("--");
        const bool esLugar = nombre == "CIFRAS" || nombre == "ARCHIVO";
        if (!conGuiones && !esLugar) continue;
        OpcionDeclarada opcion{.nombre = nombre, .valor = esLugar ? nombre : ""};
        for (std::size_t i = 1; i < palabras.size(); ++i) {
            if (palabras[i] == "(obligatorio)") {
                opcion.obligatoria = true;
            } else if (opcion.valor.empty()) {
                opcion.valor = palabras[i];
            }
        }
        opciones.push_back(opcion);
    }
    return opciones;
}

// A value for an option by what its help calls it; now and then one that will not do.
std::string valor(Azar& azar, const OpcionDeclarada& opcion, const Mundo& mundo) {
    static const std::map<std::string, std::vector<std::string>> kValores = {
        {"S", {"1", "1", "2", "3", "0", "x", "3601"}},
        {"N", {"0", "1", "1", "2", "3", "-1", "nada"}},
        {"PERFIL", {"estricto", "ampliado", "ampliado", "otro"}},
        {"FORMATO", {"csv", "xls", "jsonl", "pdf"}},
        {"MINUTOS", {"1", "5", "60", "7"}},
        {"DD/MM/AAAA", {"31/12/2024", "29/02/2024", "30/02/2024", "31/12/2064", "01/01/2065", "01/01/2000"}},
        {"HH:MM:SS", {"23:59:58", "00:00:00", "24:00:00"}},
        {"CIFRAS", {"02080050", "20800512", "123", "0208005x"}},
        {"TEXTO",
         {"Otro", "", "Señor Ñandú", "12", "a\nb", "\x1b[2J", "--reloj-pc",
          "demasiado largo para caber en un campo así"}},
        {"CARPETA", {"carpeta", "carpeta", "no/hay", "a.rgt", ""}},
    };
    const auto lista = kValores.find(opcion.valor);
    if (lista != kValores.end()) return uno(azar, lista->second);
    if (vez(azar, 12)) return "-";
    if (vez(azar, 20)) return "";
    return mundo.nombre(azar);
}

}  // namespace

std::vector<OrdenDeclarada> declaradas(const std::string& programa) {
    const auto todo = ayuda({programa, "--help"});
    std::vector<OrdenDeclarada> ordenes;
    for (const auto& palabras : renglones(todo.substr(todo.find("Órdenes:")))) {
        const auto& nombre = palabras.front();
        ordenes.push_back({nombre, opcionesDe(ayuda({programa, nombre, "--help"}))});
    }
    return ordenes;
}

Linea linea(Azar& azar, const std::vector<OrdenDeclarada>& ordenes, const Mundo& mundo) {
    const auto& orden = uno(azar, ordenes);
    Linea linea;
    auto& palabras = linea.palabras;
    palabras = {"--com", "1=" + mundo.puerto().string(), orden.nombre};
    if (vez(azar, 50)) palabras.push_back("--help");
    for (const auto& opcion : orden.opciones) {
        const bool lugar = !opcion.nombre.starts_with("--");
        // What makes a line do something stands on most of them.
        const bool importa = opcion.obligatoria || lugar || opcion.nombre == "--borrar-memoria" ||
                             (opcion.nombre == "--cuenta" && !vez(azar, 8));
        if (importa ? vez(azar, 10) : !vez(azar, 3)) continue;
        auto veces = vez(azar, 15) ? 2u : 1u;
        if (lugar && opcion.valor == "ARCHIVO") veces = 1 + static_cast<unsigned>(tirar(azar, 3));
        for (; veces > 0; --veces) {
            if (opcion.valor.empty()) {
                palabras.push_back(opcion.nombre);
            } else if (lugar) {
                linea.lugares.push_back(valor(azar, opcion, mundo));
                palabras.push_back(linea.lugares.back());
            } else if (vez(azar, 3)) {
                palabras.push_back(opcion.nombre + "=" + valor(azar, opcion, mundo));
            } else {
                palabras.push_back(opcion.nombre);
                palabras.push_back(valor(azar, opcion, mundo));
            }
        }
    }
    return linea;
}

}  // namespace telvane
