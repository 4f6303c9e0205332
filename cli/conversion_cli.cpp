#include "cli/conversion_cli.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include <fmt/format.h>

#include "consola/codigos_salida.h"
#include "data/archivo_base.h"
#include "data/clase_de_archivo.h"
#include "platform/contados.h"

namespace telvane {

Convertido convertirImagen(Conversor& conversor, const TrabajoDeConversion& trabajo, std::size_t bytes,
                           std::string_view nombre) {
    if (bytes == 0) throw ErrorCli(CodigoSalida::fallo, std::string(kBaseVacia));
    const auto leidos = conversor.destino().first(std::min(bytes, Conversor::kAlcance));
    if (const auto queja = quejaDeOtraClase(leidos); !queja.empty())
        throw ErrorCli(CodigoSalida::fallo, queja);
    auto archivo =
        conversor.convertir(bytes, trabajo.formato, trabajo.perfil, trabajo.momento, trabajo.origen);
    auto aviso = archivo.recuento.texto();
    if (bytes < kBytesMemoria) {
        aviso += fmt::format("\naviso: en {} hay {} de los {} de una imagen completa", nombre,
                             contados(static_cast<std::int64_t>(bytes), "byte", "bytes"), kBytesMemoria);
    } else if (bytes > kBytesMemoria) {
        // What is read reaches a little further than an image, so that this shows.
        static_assert(Conversor::kAlcance > kBytesMemoria);
        aviso += fmt::format("\naviso: en {} hay más de los {} bytes de una imagen", nombre, kBytesMemoria);
    }
    return {std::move(archivo), std::move(aviso)};
}

}  // namespace telvane
