#include "data/formato.h"

#include "platform/minusculas.h"

namespace telvane {

std::optional<Formato> leerFormato(std::string_view texto) {
    for (const auto& suya : kFormatos) {
        if (texto == suya.nombre()) return suya.formato;
    }
    return std::nullopt;
}

std::optional<Formato> formatoDelNombre(const std::filesystem::path& nombre) {
    const auto final = enMinusculas(nombre.extension().string());
    return leerFormato(std::string_view(final).substr(final.empty() ? 0 : 1));
}

std::string nombresDeFormatos() {
    std::string nombres;
    for (const auto& suya : kFormatos) {
        if (&suya != &kFormatos.front()) nombres += &suya == &kFormatos.back() ? " o " : ", ";
        nombres += suya.nombre();
    }
    return nombres;
}

std::string motivoFormato(const std::string& texto) {
    return leerFormato(texto) ? "" : "debe ser " + nombresDeFormatos();
}

}  // namespace telvane
