#include "cli/conversion_cli.h"

#include <utility>

#include <fmt/format.h>

#include "consola/codigos_salida.h"
#include "data/archivo_base.h"

namespace telvane {

Convertido convertirImagen(Conversor& conversor, const TrabajoDeConversion& trabajo, std::size_t bytes) {
    if (bytes == 0) throw ErrorCli(CodigoSalida::fallo, std::string(kBaseVacia));
    auto archivo =
        conversor.convertir(bytes, trabajo.formato, trabajo.perfil, trabajo.momento, trabajo.origen);
    auto aviso = archivo.recuento.texto();
    if (bytes < kBytesMemoria) {
        aviso += fmt::format("\naviso: hay {} bytes de los {} de una imagen completa", bytes, kBytesMemoria);
    } else if (bytes > kBytesMemoria) {
        // What is read reaches a little further than an image, so that this shows.
        static_assert(Conversor::kAlcance > kBytesMemoria);
        aviso += fmt::format("\naviso: hay más de los {} bytes de una imagen", kBytesMemoria);
    }
    return {std::move(archivo), std::move(aviso)};
}

}  // namespace telvane
