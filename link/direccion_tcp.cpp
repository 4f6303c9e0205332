#include "link/direccion_tcp.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "platform/minusculas.h"
#include "platform/numero.h"

namespace telvane {

namespace {

constexpr std::string_view kEsquema = "tcp://";

// 0: none.
std::uint16_t puertoDe(std::string_view texto) {
    return numeroDe<std::uint16_t>(texto).value_or(0);
}

// What a name or an address is made of; a zone follows a percent sign ("fe80::1%eth0").
bool esMaquina(std::string_view texto, bool conDosPuntos) {
    return !texto.empty() && std::all_of(texto.begin(), texto.end(), [&](char c) {
        return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '.' ||
               c == '-' || c == '_' || (conDosPuntos && (c == ':' || c == '%'));
    });
}

}  // namespace

std::string DireccionTcp::texto() const {
    return maquina.find(':') == std::string::npos ? maquina + ':' + puerto : '[' + maquina + "]:" + puerto;
}

std::string DireccionTcp::completa() const {
    return std::string(kEsquema) + texto();
}

bool esDireccionTcp(std::string_view texto) {
    return texto.size() >= kEsquema.size() &&
           std::equal(kEsquema.begin(), kEsquema.end(), texto.begin(),
                      [](char debe, char c) { return minuscula(c) == debe; });
}

std::optional<DireccionTcp> leerDireccionTcp(std::string_view texto) {
    if (!esDireccionTcp(texto)) return std::nullopt;
    texto.remove_prefix(kEsquema.size());
    const auto separador = texto.rfind(':');
    if (separador == std::string_view::npos) return std::nullopt;
    auto maquina = texto.substr(0, separador);
    const auto puerto = puertoDe(texto.substr(separador + 1));
    const bool conCorchetes = maquina.size() > 2 && maquina.front() == '[' && maquina.back() == ']';
    if (conCorchetes) maquina = maquina.substr(1, maquina.size() - 2);
    if (!esMaquina(maquina, conCorchetes) || puerto == 0) return std::nullopt;
    // A zone behind the percent sign is the name of an interface, whose capitals count.
    const auto zona = std::min(maquina.find('%'), maquina.size());
    auto nombre = enMinusculas(std::string(maquina.substr(0, zona)));
    nombre += maquina.substr(zona);
    return DireccionTcp{std::move(nombre), std::to_string(puerto)};
}

}  // namespace telvane
