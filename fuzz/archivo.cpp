// What images can do to an archive: any two of them, cut anywhere, one after the other and once more.
#include "historico/archivo.h"

#include <algorithm>
#include <array>

#include "fuzz/azar.h"
#include "historico/almacen_sqlite.h"
#include "historico/lectura.h"

namespace {

using namespace telvane;

// The header and few records are the input's; the rest of the memory is erased.
std::vector<std::uint8_t> imagenDe(Entrada& entrada, std::span<const std::uint8_t> bytes) {
    std::vector<std::uint8_t> imagen(kBytesMemoria, 0xFF);
    const auto largo = std::min(bytes.size(), imagen.size());
    std::copy_n(bytes.begin(), largo, imagen.begin() + (entrada.byte() % 2 == 0 ? 0 : 384));
    if (entrada.byte() % 4 == 0) imagen.resize(largo);
    return imagen;
}

void incorporar(Archivo& archivo, const std::vector<std::uint8_t>& imagen) {
    try {
        const Archivo::Destino destino{
            .serie = serieDe(imagen) ? std::nullopt : std::optional<std::string>("02080050"), .como = {}};
        const auto hecha =
            archivo.incorporar(imagen, destino, {"azar", Incorporada(std::chrono::seconds(1))});
        exigirQue(hecha.nuevas <= hecha.muestras);
        exigirQue(archivo.incorporar(imagen, destino, {"azar", {}}).repetida);
    } catch (const ErrorImagen&) {
        // Another logger's, by what it holds: refused whole.
        return;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* datos, std::size_t cuantos) {
    Entrada entrada(datos, cuantos);
    const std::array<std::uint8_t, 2> como = {entrada.byte(), entrada.byte()};
    Entrada modos(como.data(), como.size());
    const auto resto = entrada.resto();
    const auto almacen = AlmacenSqlite::temporal();
    Archivo archivo(*almacen);
    incorporar(archivo, imagenDe(modos, resto));
    incorporar(archivo, imagenDe(modos, resto.subspan(resto.size() / 2)));
    const auto prueba = AlmacenSqlite::temporal();
    exigirQue(archivo.comprobar(*prueba, [] {}).lineas.empty());
    return 0;
}
