#include "historico/ficha.h"

#include <array>
#include <set>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "data/miembros_ficha.h"
#include "historico/textos_historico.h"
#include "link/protocolo.h"
#include "platform/archivo.h"
#include "platform/numero.h"
#include "platform/texto_visible.h"

namespace telvane {

namespace {

namespace fs = std::filesystem;
using nlohmann::json;

// Many times what a download writes.
constexpr std::size_t kMaximo = 65536;
// More than a download can count.
constexpr std::int64_t kMaximoEntero = 1'000'000'000'000;
// The logger's years go from 2000 to 2099: no clock is further off.
constexpr std::int64_t kMaximoDesfase = std::int64_t{100} * 366 * 24 * 3600;
// As long as a path can be.
constexpr std::size_t kMaximoDispositivo = 4096;
// Clocks of two PCs differ by seconds; by more than this one of them is wrong.
constexpr auto kDelantePermitido = std::chrono::hours(1);

// "2026-11-20T17:04:09"
std::optional<Instante> leerSegundo(std::string_view texto) {
    constexpr std::size_t kHastaMinuto = 16;
    constexpr std::size_t kEntero = 19;
    if (texto.size() != kEntero || texto[kHastaMinuto] != ':') return std::nullopt;
    const auto minuto = leerMomento(texto.substr(0, kHastaMinuto));
    const auto segundo = numeroDe<int>(texto.substr(kHastaMinuto + 1));
    if (!minuto || !segundo || *segundo < 0 || *segundo >= 60) return std::nullopt;
    return *minuto + std::chrono::seconds(*segundo);
}

// The same with a Z behind it.
std::optional<std::chrono::sys_seconds> leerUtc(std::string_view texto) {
    if (!texto.ends_with('Z')) return std::nullopt;
    const auto momento = leerSegundo(texto.substr(0, texto.size() - 1));
    if (!momento) return std::nullopt;
    return std::chrono::sys_seconds(momento->time_since_epoch());
}

// Of a name that stands twice one would have to guess which is meant.
json leerObjeto(std::string_view contenido) {
    std::set<std::string> vistos;
    bool repetido = false;
    const auto alLeer = [&](int profundidad, json::parse_event_t suceso, json& leido) {
        if (suceso == json::parse_event_t::key && profundidad == 1)
            repetido = !vistos.insert(leido.get<std::string>()).second || repetido;
        return true;
    };
    auto ficha = json::parse(contenido, alLeer, false);
    if (!ficha.is_object()) throw ErrorFicha("no es una ficha de descarga");
    if (repetido) throw ErrorFicha("dice dos veces lo mismo");
    return ficha;
}

const json& miembro(const json& ficha, const char* nombre) {
    const auto lugar = ficha.find(nombre);
    if (lugar == ficha.end()) throw ErrorFicha(fmt::format("le falta \"{}\"", nombre));
    return *lugar;
}

[[noreturn]] void noVale(const char* nombre) {
    throw ErrorFicha(fmt::format("su \"{}\" no vale", nombre));
}

std::int64_t entero(const json& ficha, const char* nombre, std::int64_t minimo,
                    std::int64_t maximo = kMaximoEntero) {
    const auto& valor = miembro(ficha, nombre);
    if (!valor.is_number_integer()) noVale(nombre);
    const bool cabe = !valor.is_number_unsigned() || valor.get<std::uint64_t>() <= kMaximoEntero;
    const auto numero = cabe ? valor.get<std::int64_t>() : minimo - 1;
    if (numero < minimo || numero > maximo) noVale(nombre);
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

// A text that may be missing, or null where there was nothing to tell.
std::optional<std::string> textoSiHay(const json& ficha, const char* nombre) {
    const auto valor = ficha.find(nombre);
    if (valor == ficha.end() || valor->is_null()) return std::nullopt;
    return texto(ficha, nombre);
}

// It may stand beside another image than its own: files get other names. By its SHA-256 an image is known;
// where that was not written, its file's name says which it was.
void exigirQueSeaDe(const json& ficha, const ImagenConFicha& imagen) {
    const auto huella = textoSiHay(ficha, miembros_ficha::kImagen);
    const auto base = textoSiHay(ficha, miembros_ficha::kBase);
    const auto serie = textoSiHay(ficha, miembros_ficha::kSerie);
    const auto suya = serieDe(imagen.bytes);
    const bool otra = huella ? *huella != textoDe(huellaDe(imagen.bytes))
                             : base && *base != sinControles(imagen.archivo.filename().string());
    const bool otraSerie = suya && serie && *serie != *suya;
    if (otra || otraSerie) throw ErrorFicha("es de otra imagen");
}

std::chrono::sys_seconds descargadaDe(const json& ficha, std::chrono::sys_seconds ahora) {
    const auto descargada = leerUtc(texto(ficha, miembros_ficha::kDescargada));
    // A PC that lost its clock begins in 1970.
    if (!descargada || descargada->time_since_epoch() < kPrimerMomento.time_since_epoch())
        noVale(miembros_ficha::kDescargada);
    if (*descargada > ahora + kDelantePermitido)
        throw ErrorFicha(fmt::format("su \"{}\" está en el futuro: mire el reloj del equipo que la descargó",
                                     miembros_ficha::kDescargada));
    return *descargada;
}

std::optional<std::int64_t> desfaseDe(const json& ficha) {
    const auto reloj = textoSiHay(ficha, miembros_ficha::kReloj);
    if (reloj && !leerSegundo(*reloj)) noVale(miembros_ficha::kReloj);
    if (miembro(ficha, miembros_ficha::kDesfase).is_null()) {
        // Of a clock that shows a time it is known how far it is off.
        if (reloj) noVale(miembros_ficha::kDesfase);
        return std::nullopt;
    }
    return entero(ficha, miembros_ficha::kDesfase, -kMaximoDesfase, kMaximoDesfase);
}

std::string dispositivoDe(const json& ficha) {
    auto dispositivo = texto(ficha, miembros_ficha::kDispositivo);
    if (dispositivo.empty() || dispositivo.size() > kMaximoDispositivo) noVale(miembros_ficha::kDispositivo);
    return dispositivo;
}

FichaDescarga leerArchivoDe(const fs::path& nombre, const ImagenConFicha& imagen) {
    const auto bytes = leerArchivo(nombre, kMaximo + 1);
    if (bytes.size() > kMaximo) throw ErrorFicha("no es una ficha de descarga");
    return leerFicha({reinterpret_cast<const char*>(bytes.data()), bytes.size()}, imagen);
}

}  // namespace

FichaDescarga leerFicha(std::string_view contenido, const ImagenConFicha& imagen) {
    const auto ficha = leerObjeto(contenido);
    exigirQueSeaDe(ficha, imagen);
    return {.descargada = descargadaDe(ficha, imagen.ahora),
            .puerto = entero(ficha, miembros_ficha::kPuerto, 1, kUltimoPuerto),
            .dispositivo = dispositivoDe(ficha),
            .desfase = desfaseDe(ficha),
            .verificada = logico(ficha, miembros_ficha::kVerificada),
            .reintentos = entero(ficha, miembros_ficha::kReintentos, 0),
            .erroresDeLinea = entero(ficha, miembros_ficha::kErroresDeLinea, 0)};
}

FichaHallada fichaJuntoA(const ImagenConFicha& imagen) {
    const auto& base = imagen.archivo;
    const std::array<fs::path, 2> nombres = {fs::path(base.string() + ".json"),
                                             fs::path(base).replace_extension(".json")};
    FichaHallada hallada;
    for (const auto& nombre : nombres) {
        std::error_code motivo;
        const bool falta = fs::symlink_status(nombre, motivo).type() == fs::file_type::not_found;
        // A name that no file can bear is none that somebody left here.
        if (nombre == base || falta || motivo == std::errc::filename_too_long) continue;
        try {
            hallada.ficha = leerArchivoDe(nombre, imagen);
            break;
        } catch (const ErrorFicha& error) {
            hallada.defectos.push_back(fmt::format("{}: {}", nombreVisible(nombre), error.what()));
        } catch (const ErrorLectura& error) {
            hallada.defectos.emplace_back(error.what());
        }
    }
    return hallada;
}

}  // namespace telvane
