#include "cli/conversion.h"

#include <algorithm>
#include <array>
#include <utility>

#include <fmt/format.h>

#include "loggerconfig/datos_config.h"
#include "loggerconfig/pasos_serie.h"

namespace telvane {

namespace {

struct NombreFormato {
    Formato formato;
    std::string_view extension;
};
constexpr std::array<NombreFormato, 3> kFormatos = {
    {{Formato::csv, ".csv"}, {Formato::xls, ".xls"}, {Formato::jsonl, ".jsonl"}}};

// The columns of a sample line behind date and time. The compass point is the only one that is no number.
constexpr std::array<std::string_view, 9> kClaves = {"humedad",      "temperatura", "dir_viento",
                                                     "dir_viento_r", "vel_viento",  "rad_solar",
                                                     "presion",      "lluvia",      "evaporacion"};
constexpr std::size_t kClaveTexto = 3;

std::string_view hasta(std::string_view& resto, char separador) {
    const auto fin = std::min(resto.find(separador), resto.size());
    const auto campo = resto.substr(0, fin);
    resto.remove_prefix(std::min(resto.size(), fin + 1));
    return campo;
}

// "20/11/2019,17:04:09,55,..." as an object.
void agregarObjeto(std::string& texto, std::string_view linea) {
    const auto fecha = hasta(linea, ',');
    const auto hora = hasta(linea, ',');
    texto += fmt::format(R"({{"hora":"{}-{}-{}T{}")", fecha.substr(6, 4), fecha.substr(3, 2),
                         fecha.substr(0, 2), hora);
    for (std::size_t i = 0; i < kClaves.size() && !linea.empty(); ++i) {
        const std::string_view comillas = i == kClaveTexto ? "\"" : "";
        texto += fmt::format(R"(,"{}":{}{}{})", kClaves[i], comillas, hasta(linea, ','), comillas);
    }
    texto += "}\n";
}

ArchivoDatos archivoJsonl(const Memoria& memoria, Decodificador& decodificador) {
    BloquesTexto bloques;
    const auto recuento = bloques.decodificar(memoria, decodificador, kUltimoBloque);
    std::string objetos;
    auto resto = bloques.unidos();
    while (!resto.empty()) {
        auto linea = hasta(resto, '\n');
        if (linea.ends_with('\r')) linea.remove_suffix(1);
        agregarObjeto(objetos, linea);
    }
    return {std::move(objetos), recuento};
}

}  // namespace

std::optional<Formato> leerFormato(std::string_view texto) {
    for (const auto& [formato, nombre] : kFormatos) {
        if (texto == nombre.substr(1)) return formato;
    }
    return std::nullopt;
}

std::string_view extension(Formato formato) {
    return std::find_if(kFormatos.begin(), kFormatos.end(),
                        [&](const auto& f) { return f.formato == formato; })
        ->extension;
}

void Conversor::marcarSerie(const std::string& serie) {
    const auto empacada = empacarSerie(serie);
    std::copy(empacada.begin(), empacada.end(), memoria_.imagen().begin() + registro_config::kSerie);
    usados_ = std::max(usados_, registro_config::kSerie + empacada.size());
}

ArchivoDatos Conversor::convertir(std::span<const std::uint8_t> imagen, Formato formato, Perfil perfil,
                                  const FechaHora& momento, const OrigenConfig& origen) {
    const auto cuantos = std::min(imagen.size(), kAlcance);
    std::copy_n(imagen.begin(), cuantos, destino().begin());
    return convertir(cuantos, formato, perfil, momento, origen);
}

ArchivoDatos Conversor::convertir(std::size_t bytes, Formato formato, Perfil perfil, const FechaHora& momento,
                                  const OrigenConfig& origen) {
    // Only what an image before this one left behind: the other pages were never touched.
    std::fill_n(destino().begin() + static_cast<std::ptrdiff_t>(bytes), usados_ - std::min(usados_, bytes),
                std::uint8_t{0});
    usados_ = bytes;
    if (origen.serie) marcarSerie(*origen.serie);
    const auto cabecera = leerCabecera(memoria_.imagen());
    Decodificador decodificador(perfil);
    decodificador.evaporacion(cabecera.llevaEvaporacion());
    switch (formato) {
        case Formato::xls:
            return archivoXls(memoria_, decodificador, kUltimoBloque);
        case Formato::jsonl:
            return archivoJsonl(memoria_, decodificador);
        case Formato::csv:
            break;
    }
    return archivoCsv(memoria_, decodificador, kUltimoBloque, momento,
                      origen.texto ? *origen.texto : cabecera.texto);
}

}  // namespace telvane
