#include "data/formato.h"

namespace telvane {

std::optional<Formato> leerFormato(std::string_view texto) {
    for (const auto& suya : kFormatos) {
        if (texto == suya.nombre()) return suya.formato;
    }
    return std::nullopt;
}

std::string nombresDeFormatos() {
    std::string nombres;
    for (const auto& suya : kFormatos) {
        if (&suya != &kFormatos.front()) nombres += &suya == &kFormatos.back() ? " o " : ", ";
        nombres += suya.nombre();
    }
    return nombres;
}

}  // namespace telvane
