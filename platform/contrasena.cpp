#include "platform/contrasena.h"

#include <algorithm>
#include <cstddef>

#include "platform/minusculas.h"

namespace telvane {

namespace {

constexpr auto kNinguno = std::string_view::npos;
constexpr std::string_view kEsquema = "://";
constexpr std::string_view kTrasMensaje = " \t\n\"'";
constexpr std::string_view kEnSuLugar = "…";
// No text that is shown has one.
constexpr char kTapado = '\0';

// The key of an address's parameter as the data base's library reads it: "%6f" is a letter as well.
std::string claveLeida(std::string_view escrita) {
    const auto cifra = [&](std::size_t lugar) {
        constexpr std::string_view kCifras = "0123456789abcdef";
        const char c = lugar < escrita.size() ? escrita[lugar] : ' ';
        return kCifras.find(minuscula(c));
    };
    std::string leida;
    for (std::size_t i = 0; i < escrita.size(); ++i) {
        const auto alta = cifra(i + 1);
        const auto baja = cifra(i + 2);
        const bool cifrada = escrita[i] == '%' && alta != kNinguno && baja != kNinguno;
        leida += cifrada ? static_cast<char>(alta * 16 + baja) : escrita[i];
        if (cifrada) i += 2;
    }
    return leida;
}

// Where the next password behind "password=" begins; kNinguno: there is none.
std::size_t trasClave(std::string_view texto, std::size_t desde) {
    constexpr std::string_view kAntes = " \t\n\"'?&";
    for (auto igual = texto.find('=', desde); igual != kNinguno; igual = texto.find('=', igual + 1)) {
        const auto antes = igual == 0 ? kNinguno : texto.find_last_of(kAntes, igual - 1);
        const auto inicio = antes == kNinguno ? 0 : antes + 1;
        if (claveLeida(texto.substr(inicio, igual - inicio)).ends_with("password")) return igual + 1;
    }
    return kNinguno;
}

// The "@" behind the password of what follows "://". One written as it is may hold any of "@/?": only those
// of the parameters, "/BASE?KEY=", are none of its own.
std::size_t arrobaDe(std::string_view direccion) {
    for (auto pregunta = direccion.find('?', direccion.find('/')); pregunta != kNinguno;
         pregunta = direccion.find('?', pregunta + 1)) {
        const auto fin = direccion.find_first_of("=@?/:&", pregunta + 1);
        if (fin != kNinguno && direccion[fin] == '=') return direccion.substr(0, pregunta).rfind('@');
    }
    return direccion.rfind('@');
}

// Every password of a text becomes this character. finales: what an address cannot hold.
void tapar(std::span<char> texto, std::string_view finales, std::size_t desde, char con) {
    const std::string_view leido(texto.data(), texto.size());
    const auto finDe = [&](std::size_t lugar) {
        return std::min(leido.find_first_of(finales, lugar), leido.size());
    };
    const auto poner = [&](std::size_t lugar, std::size_t fin) {
        std::ranges::fill(texto.subspan(lugar, fin - lugar), con);
    };
    for (auto lugar = leido.find(kEsquema, desde); lugar != kNinguno; lugar = leido.find(kEsquema, lugar)) {
        lugar += kEsquema.size();
        const auto direccion = leido.substr(lugar, finDe(lugar) - lugar);
        const auto puntos = direccion.find(':');
        const auto arroba = arrobaDe(direccion);
        if (arroba != kNinguno && puntos < arroba) poner(lugar + puntos + 1, lugar + arroba);
    }
    for (auto lugar = trasClave(leido, desde); lugar != kNinguno; lugar = trasClave(leido, lugar))
        poner(lugar, std::min(leido.find('&', lugar), finDe(lugar)));
}

// What is covered, of whatever length, as one mark.
std::string marcado(std::string_view tapado) {
    std::string texto;
    for (std::size_t i = 0; i < tapado.size(); ++i) {
        if (tapado[i] != kTapado) {
            texto += tapado[i];
        } else if (i == 0 || tapado[i - 1] != kTapado) {
            texto += kEnSuLugar;
        }
    }
    return texto;
}

}  // namespace

std::string sinContrasenas(std::string_view mensaje) {
    std::string tapado(mensaje);
    tapar(tapado, kTrasMensaje, 0, kTapado);
    return marcado(tapado);
}

std::string sinContrasena(std::string_view direccion) {
    std::string tapado(direccion);
    if (const auto esquema = direccion.find(kEsquema); esquema != kNinguno)
        tapar(tapado, "", esquema, kTapado);
    return marcado(tapado);
}

void ocultarContrasena(std::span<char> argumento) {
    const auto esquema = std::string_view(argumento.data(), argumento.size()).find(kEsquema);
    if (esquema != kNinguno) tapar(argumento, "", esquema, '*');
}

}  // namespace telvane
