#include "informe/texto_html.h"

#include <cmath>

#include <fmt/format.h>

#include "platform/recorte.h"
#include "platform/utf8.h"
#include "regional/formatos.h"

namespace telvane::informe {

namespace {

constexpr std::string_view kReemplazo = "\xEF\xBF\xBD";  // U+FFFD

constexpr bool entre(char32_t c, char32_t desde, char32_t hasta) {
    return desde <= c && c <= hasta;
}

// Characters that show nothing, or change how others are shown.
constexpr bool seMuestra(char32_t c) {
    const bool control = c < 0x20 || entre(c, 0x7F, 0x9F);
    const bool invisible = c == 0xAD || c == 0x61C || entre(c, 0x200B, 0x200F) || entre(c, 0x2028, 0x202E) ||
                           entre(c, 0x2060, 0x206F) || c == 0xFEFF || entre(c, 0xFFF0, 0xFFFC) ||
                           entre(c, 0xE0000, 0xE0FFF);
    const bool ninguno = (c & 0xFFFEU) == 0xFFFEU || entre(c, 0xFDD0, 0xFDEF);
    return !control && !invisible && !ninguno;
}

std::string_view escape(char32_t c) {
    switch (c) {
        case '&':
            return "&amp;";
        case '<':
            return "&lt;";
        case '>':
            return "&gt;";
        case '"':
            return "&quot;";
        case '\'':
            return "&#39;";
        case '`':
            return "&#96;";
        default:
            return {};
    }
}

std::string limpio(std::string_view texto, bool conEscapes) {
    std::string salida;
    texto = recortado(texto);
    while (!texto.empty()) {
        const auto c = caracterEn(texto, 0);
        const auto puesto = conEscapes ? escape(c.punto) : std::string_view();
        if (!c.bueno || !seMuestra(c.punto)) {
            salida += kReemplazo;
        } else {
            salida += puesto.empty() ? texto.substr(0, c.bytes) : puesto;
        }
        texto.remove_prefix(c.bytes);
    }
    return salida;
}

}  // namespace

std::string deRegistrador(std::string_view texto) {
    return limpio(texto, true);
}

std::string llanoDeRegistrador(std::string_view texto) {
    return limpio(texto, false);
}

std::string numero(std::int64_t valor, int decimales) {
    std::int64_t escala = 1;
    for (int i = 0; i < decimales; ++i) escala *= 10;
    const auto absoluto = valor < 0 ? -valor : valor;
    auto texto = std::string(valor < 0 ? "-" : "") + std::to_string(absoluto / escala);
    if (decimales > 0) texto += fmt::format(".{:0{}}", absoluto % escala, decimales);
    return texto;
}

std::string numero(double valor, int decimales) {
    // A double holds 15 digits of what was calculated: 14.4999999999999982 is 14.5.
    const auto leido = std::stod(fmt::format("{:.15g}", valor * std::pow(10, decimales)));
    return numero(static_cast<std::int64_t>(std::llround(leido)), decimales);
}

std::string fecha(Instante momento) {
    const auto f = fechaDe(momento);
    return fechaCorta(f.anio, f.mes, f.dia);
}

std::string hora(Instante momento) {
    const auto h = horaDe(momento);
    return fmt::format("{:02}:{:02}", h.hora, h.minuto);
}

std::string fechaHora(Instante momento) {
    return fecha(momento) + ' ' + hora(momento);
}

std::string mesCorto(int mes) {
    return std::string(nombreDeMes(mes).substr(0, 3));
}

}  // namespace telvane::informe
