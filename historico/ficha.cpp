#include "historico/ficha.h"

#include <array>
#include <charconv>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "historico/textos_historico.h"
#include "platform/archivo.h"
#include "platform/texto_visible.h"

namespace telvane {

namespace {

namespace fs = std::filesystem;
using nlohmann::json;

// Many times what a download writes.
constexpr std::size_t kMaximo = 65536;
// More than any clock can be off.
constexpr std::int64_t kMaximoEntero = 1'000'000'000'000;

// "2026-11-20T17:04:09Z"
std::optional<std::chrono::sys_seconds> leerUtc(std::string_view texto) {
    constexpr std::size_t kHastaMinuto = 16;
    constexpr std::size_t kEntero = 20;
    if (texto.size() != kEntero || texto[kHastaMinuto] != ':' || texto.back() != 'Z') return std::nullopt;
    const auto minuto = leerMomento(texto.substr(0, kHastaMinuto));
    int segundo = -1;
    const auto* inicio = texto.data() + kHastaMinuto + 1;
    const auto [fin, error] = std::from_chars(inicio, inicio + 2, segundo);
    const bool bien = minuto && error == std::errc() && fin == inicio + 2 && segundo >= 0 && segundo < 60;
    if (!bien) return std::nullopt;
    return std::chrono::sys_seconds(minuto->time_since_epoch() + std::chrono::seconds(segundo));
}

const json& miembro(const json& ficha, const char* nombre) {
    const auto lugar = ficha.find(nombre);
    if (lugar == ficha.end()) throw ErrorFicha(fmt::format("le falta \"{}\"", nombre));
    return *lugar;
}

[[noreturn]] void noVale(const char* nombre) {
    throw ErrorFicha(fmt::format("su \"{}\" no vale", nombre));
}

std::int64_t entero(const json& ficha, const char* nombre, std::int64_t minimo) {
    const auto& valor = miembro(ficha, nombre);
    if (!valor.is_number_integer()) noVale(nombre);
    const bool cabe = !valor.is_number_unsigned() || valor.get<std::uint64_t>() <= kMaximoEntero;
    const auto numero = cabe ? valor.get<std::int64_t>() : minimo - 1;
    if (numero < minimo || numero > kMaximoEntero) noVale(nombre);
    return numero;
}

std::string texto(const json& ficha, const char* nombre) {
    const auto& valor = miembro(ficha, nombre);
    if (!valor.is_string()) noVale(nombre);
    return sinControles(valor.get<std::string>());
}

bool logico(const json& ficha, const char* nombre) {
    const auto& valor = miembro(ficha, nombre);
    if (!valor.is_boolean()) noVale(nombre);
    return valor.get<bool>();
}

// It may stand beside another image than its own: files get other names.
void exigirQueSeaDe(const json& ficha, const Huella& imagen) {
    const auto suya = ficha.find("imagen");
    if (suya == ficha.end() || *suya == textoDe(imagen)) return;
    throw ErrorFicha("es de otra imagen");
}

}  // namespace

FichaDescarga leerFicha(std::string_view contenido, const Huella& imagen) {
    const auto ficha = json::parse(contenido, nullptr, false);
    if (!ficha.is_object()) throw ErrorFicha("no es una ficha de descarga");
    exigirQueSeaDe(ficha, imagen);
    const auto descargada = leerUtc(texto(ficha, "descargada"));
    if (!descargada) noVale("descargada");
    FichaDescarga leida{.descargada = *descargada,
                        .puerto = entero(ficha, "puerto", 0),
                        .dispositivo = texto(ficha, "dispositivo"),
                        .desfase = {},
                        .verificada = logico(ficha, "verificada"),
                        .reintentos = entero(ficha, "reintentos", 0),
                        .erroresDeLinea = entero(ficha, "errores_de_linea", 0)};
    if (!miembro(ficha, "desfase_s").is_null()) leida.desfase = entero(ficha, "desfase_s", -kMaximoEntero);
    return leida;
}

std::optional<FichaDescarga> fichaJuntoA(const fs::path& base, const Huella& imagen) {
    const std::array<fs::path, 2> nombres = {fs::path(base.string() + ".json"),
                                             fs::path(base).replace_extension(".json")};
    for (const auto& nombre : nombres) {
        std::error_code sinMotivo;
        if (nombre == base || fs::symlink_status(nombre, sinMotivo).type() == fs::file_type::not_found)
            continue;
        try {
            const auto bytes = leerArchivo(nombre, kMaximo + 1);
            if (bytes.size() > kMaximo) throw ErrorFicha("no es una ficha de descarga");
            return leerFicha({reinterpret_cast<const char*>(bytes.data()), bytes.size()}, imagen);
        } catch (const ErrorFicha& error) {
            throw ErrorFicha(fmt::format("{}: {}", nombre.string(), error.what()));
        } catch (const ErrorLectura& error) {
            throw ErrorFicha(error.what());
        }
    }
    return std::nullopt;
}

}  // namespace telvane
