#include "platform/texto_visible.h"

#include <cstddef>

#include <fmt/format.h>

#include "platform/utf8.h"

namespace telvane {

namespace {

constexpr std::string_view kMarca = "\uFFFD";

// DEL, and the C1 characters.
bool esControlAlto(char32_t punto) {
    return punto >= 0x7F && punto <= 0x9F;
}

// What stands behind these marks, or beside the single ones, is shown in another order.
bool tuerce(char32_t punto) {
    return punto == 0x061C || punto == 0x200E || punto == 0x200F || (punto >= 0x202A && punto <= 0x202E) ||
           (punto >= 0x2066 && punto <= 0x2069);
}

// control: what stands in a control character's place.
std::string mostrado(std::string_view utf8, std::string_view control) {
    std::string limpio;
    for (std::size_t i = 0; i < utf8.size();) {
        const auto caracter = caracterEn(utf8, i);
        if (!caracter.bueno || tuerce(caracter.punto)) {
            limpio += kMarca;
        } else if (caracter.punto >= 0x20 && !esControlAlto(caracter.punto)) {
            limpio += utf8.substr(i, caracter.bytes);
        } else {
            limpio += control;
        }
        i += caracter.bytes;
    }
    return limpio;
}

}  // namespace

std::string sinControles(std::string_view utf8) {
    return mostrado(utf8, "");
}

std::string nombreVisible(const std::filesystem::path& ruta) {
    return mostrado(ruta.native(), kMarca);
}

std::string lineasSinControles(std::string_view utf8) {
    std::string limpias;
    for (std::size_t desde = 0;;) {
        const auto hasta = utf8.find('\n', desde);
        limpias += sinControles(utf8.substr(desde, hasta - desde));
        if (hasta == std::string_view::npos) return limpias;
        limpias += '\n';
        desde = hasta + 1;
    }
}

std::string utf8Valido(std::string_view texto) {
    std::string valido;
    for (std::size_t i = 0; i < texto.size();) {
        const auto caracter = caracterEn(texto, i);
        valido += caracter.bueno && caracter.punto != 0 ? texto.substr(i, caracter.bytes) : "\uFFFD";
        i += caracter.bytes;
    }
    return valido;
}

std::string controlesEscapados(std::string_view json) {
    std::string escapado;
    for (std::size_t i = 0; i < json.size();) {
        const auto caracter = caracterEn(json, i);
        if (esControlAlto(caracter.punto)) {
            escapado += fmt::format("\\u{:04x}", static_cast<unsigned>(caracter.punto));
        } else {
            escapado += json.substr(i, caracter.bytes);
        }
        i += caracter.bytes;
    }
    return escapado;
}

}  // namespace telvane
