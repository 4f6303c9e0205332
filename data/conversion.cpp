#include "data/conversion.h"

#include <algorithm>

#include "data/registros.h"
#include "loggerconfig/datos_config.h"
#include "loggerconfig/pasos_serie.h"

namespace telvane {

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

namespace {

// Behind the header an image consists of records, and one that is not whole is none.
std::size_t hastaElUltimoEntero(std::size_t bytes) {
    constexpr auto kCabecera = kPrimeraRanura * registro_muestra::kBytes;
    return bytes > kCabecera && bytes < kBytesMemoria ? bytes - bytes % registro_muestra::kBytes : bytes;
}

}  // namespace

ArchivoDatos Conversor::convertir(std::size_t bytes, Formato formato, Perfil perfil, const FechaHora& momento,
                                  const OrigenConfig& origen) {
    const auto llegados = bytes;
    bytes = hastaElUltimoEntero(llegados);
    // What was cut, and only what an image before this one left behind: the other pages were never touched.
    const auto sobra = std::max(usados_, llegados) - bytes;
    std::fill_n(destino().begin() + static_cast<std::ptrdiff_t>(bytes), sobra, std::uint8_t{0});
    usados_ = bytes;
    if (origen.serie) marcarSerie(*origen.serie);
    const auto config = configDeArchivo(memoria_.imagen(), origen.leido);
    Decodificador decodificador(perfil);
    decodificador.evaporacion(config.evaporacion);
    return archivoDatos(formato, memoria_, decodificador, kUltimoBloque, momento, config.texto);
}

}  // namespace telvane
