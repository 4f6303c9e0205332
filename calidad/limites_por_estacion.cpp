#include "calidad/limites_por_estacion.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "platform/numero.h"
#include "platform/recorte.h"

namespace telvane {

namespace {

constexpr std::string_view kBlancos = " \t\r";
constexpr std::size_t kCifrasSerie = 8;

// A decimal number of up to six digits before and after its point.
std::optional<Millonesimas> numero(std::string_view texto) {
    constexpr std::size_t kCifras = 6;
    const auto cifras = [](std::string_view t) -> std::optional<Millonesimas> {
        return t.size() <= kCifras ? numeroDe<std::uint32_t>(t) : std::nullopt;
    };
    const bool negativo = texto.starts_with('-');
    if (negativo) texto.remove_prefix(1);
    const auto punto = std::min(texto.find('.'), texto.size());
    const auto decimales = punto < texto.size() ? texto.substr(punto + 1) : "0";
    const auto entero = cifras(texto.substr(0, punto));
    auto parte = cifras(decimales);
    if (!entero || !parte) return std::nullopt;
    for (auto i = decimales.size(); i < kCifras; ++i) *parte *= 10;
    const auto todo = *entero * kUnidad + *parte;
    return negativo ? -todo : todo;
}

// "12h" or "90min".
std::optional<std::chrono::seconds> duracion(std::string_view texto) {
    const bool horas = texto.ends_with('h');
    const std::string_view unidad = horas ? "h" : "min";
    if (!texto.ends_with(unidad)) return std::nullopt;
    texto.remove_suffix(unidad.size());
    const auto cuanto = numeroDe<std::uint32_t>(texto).value_or(0);
    if (cuanto == 0 || cuanto > 10'000) return std::nullopt;
    return std::chrono::seconds(horas ? std::chrono::hours(cuanto) : std::chrono::minutes(cuanto));
}

// "02080050", with the digits that a logger's damaged number may show, or "02080050/NORTE".
bool nombraEstacion(std::string_view nombre) {
    if (nombre.size() < kCifrasSerie) return false;
    const auto serie = nombre.substr(0, kCifrasSerie);
    if (!std::ranges::all_of(serie, [](char c) { return c >= '0' && c <= '?'; })) return false;
    if (nombre.size() == kCifrasSerie) return true;
    const auto como = nombre.substr(kCifrasSerie);
    return como.size() > 1 && como.front() == '/' && std::ranges::all_of(como.substr(1), [](char c) {
               return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
                      c == '-' || c == '_';
           });
}

// A line without a reason to refuse it is taken, otherwise this says why not.
class ErrorDeLinea : public std::runtime_error {
   public:
    using std::runtime_error::runtime_error;
};

using Valores = std::vector<std::string_view>;

void leerRango(std::optional<LimiteRango>& limite, const Valores& valores) {
    const auto desde = valores.size() == 2 ? numero(valores[0]) : std::nullopt;
    const auto hasta = valores.size() == 2 ? numero(valores[1]) : std::nullopt;
    if (!desde || !hasta || *desde > *hasta) throw ErrorDeLinea("se esperan dos números, el menor primero");
    limite = LimiteRango{.desde = *desde, .hasta = *hasta};
}

void leerSalto(std::optional<Millonesimas>& limite, const Valores& valores) {
    const auto salto = valores.size() == 1 ? numero(valores[0]) : std::nullopt;
    if (!salto || *salto < 0) throw ErrorDeLinea("se espera un número que no sea negativo");
    limite = salto;
}

void leerFijo(std::optional<LimiteFijo>& limite, const Valores& valores, bool delViento) {
    const std::size_t maximo = delViento ? 3 : 2;
    if (valores.size() < 2 || valores.size() > maximo) {
        throw ErrorDeLinea("se esperan una duración y un número, como 12h 0.3");
    }
    const auto dura = duracion(valores[0]);
    const auto amplitud = numero(valores[1]);
    const auto viento = valores.size() == 3 ? numero(valores[2]) : std::optional(limite->viento);
    if (!dura || !amplitud || *amplitud < 0 || !viento) {
        throw ErrorDeLinea("se esperan una duración y un número, como 12h 0.3");
    }
    limite = LimiteFijo{.dura = *dura, .amplitud = *amplitud, .viento = *viento};
}

void leerLimite(Limites& limites, std::string_view clave, const Valores& valores) {
    const auto punto = std::min(clave.find('.'), clave.size());
    const auto canal = std::ranges::find(kNombresCanal, clave.substr(0, punto));
    const auto marca = punto < clave.size() ? clave.substr(punto + 1) : std::string_view();
    if (canal != kNombresCanal.end()) {
        const auto i = static_cast<std::size_t>(canal - kNombresCanal.begin());
        const bool delViento = i == static_cast<std::size_t>(Canal::velViento) ||
                               i == static_cast<std::size_t>(Canal::dirViento);
        if (marca == "rango" && limites.rango[i]) return leerRango(limites.rango[i], valores);
        if (marca == "salto" && limites.salto[i]) return leerSalto(limites.salto[i], valores);
        if (marca == "fijo" && limites.fijo[i]) return leerFijo(limites.fijo[i], valores, delViento);
    }
    throw ErrorDeLinea(fmt::format("nombre desconocido: {}", clave));
}

// The station of "[02080050]".
std::string leerSeccion(std::string_view linea) {
    const auto nombre =
        linea.ends_with(']') ? recortado(linea.substr(1, linea.size() - 2), kBlancos) : std::string_view();
    if (!nombraEstacion(nombre))
        throw ErrorDeLinea("se espera una estación entre corchetes, como [02080050]");
    return std::string(nombre);
}

}  // namespace

LimitesPorEstacion LimitesPorEstacion::leer(std::string_view texto, const std::string& archivo) {
    // Some editors begin a file with this.
    constexpr std::string_view kMarcaUtf8 = "\xEF\xBB\xBF";
    if (texto.starts_with(kMarcaUtf8)) texto.remove_prefix(kMarcaUtf8.size());
    LimitesPorEstacion todos;
    Limites* actual = nullptr;
    std::map<std::pair<const Limites*, std::string>, std::size_t> vistas;
    for (std::size_t numeroDeLinea = 1; !texto.empty(); ++numeroDeLinea) {
        const auto fin = std::min(texto.find('\n'), texto.size());
        const auto linea = recortado(texto.substr(0, fin), kBlancos);
        texto.remove_prefix(std::min(fin + 1, texto.size()));
        if (linea.empty() || linea.front() == '#' || linea.front() == ';') continue;
        try {
            if (linea.front() == '[') {
                actual = &todos.propios_.try_emplace(leerSeccion(linea), limitesUsuales()).first->second;
                continue;
            }
            const auto igual = linea.find('=');
            if (igual == std::string_view::npos) throw ErrorDeLinea("se espera nombre = valores");
            if (actual == nullptr) throw ErrorDeLinea("falta la estación, como [02080050]");
            const auto clave = recortado(linea.substr(0, igual), kBlancos);
            leerLimite(*actual, clave, palabras(linea.substr(igual + 1), kBlancos));
            const auto [antes, nueva] =
                vistas.try_emplace(std::pair(actual, std::string(clave)), numeroDeLinea);
            if (!nueva)
                throw ErrorDeLinea(
                    fmt::format("{} ya está en la línea {}: deje una de las dos", clave, antes->second));
        } catch (const ErrorDeLinea& error) {
            throw ErrorLimites(fmt::format("{}: línea {}: {}", archivo, numeroDeLinea, error.what()));
        }
    }
    return todos;
}

const Limites& LimitesPorEstacion::de(const std::string& estacion) const {
    const auto propios = propios_.find(estacion);
    return propios == propios_.end() ? limitesUsuales() : propios->second;
}

}  // namespace telvane
