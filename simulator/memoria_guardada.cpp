#include "simulator/memoria_guardada.h"

#include <array>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include <fmt/format.h>

#include "data/clase_de_archivo.h"
#include "link/protocolo.h"
#include "platform/archivo.h"
#include "platform/guardado.h"
#include "platform/texto_visible.h"
#include "simulator/reserva.h"

namespace telvane {

namespace {

namespace fs = std::filesystem;

constexpr auto kDeMemoria = std::to_array<std::string_view>({".rgt", ".rgt.parcial"});

std::runtime_error enUso(const Destino& destino) {
    return std::runtime_error(fmt::format("otro telvane-sim usa la memoria {}: termínelo o dé otro --memoria",
                                          nombreVisible(destino.pedido)));
}

Descriptor reservarNombre(const Destino& destino) {
    std::error_code error;
    const auto entero = fs::weakly_canonical(fs::absolute(destino.ruta, error), error);
    if (auto reserva = reservar("telvane-sim memoria", entero)) return std::move(*reserva);
    throw enUso(destino);
}

// The name as it was given, and where it leads.
std::string cual(const Destino& destino) {
    const auto pedido = nombreVisible(destino.pedido);
    return destino.ruta == destino.pedido
               ? pedido
               : fmt::format("{}, que lleva a {},", pedido, nombreVisible(destino.ruta));
}

// It is written over with the first change: somebody's letter named by mistake is not ours, whatever its name
// and that of a link that leads to it.
std::vector<std::uint8_t> leer(const Destino& destino) {
    auto imagen = leerArchivo(destino.pedido, kBytesMemoria + 1);
    if (imagen.size() > kBytesMemoria)
        throw std::runtime_error(
            fmt::format("{} tiene más de {} bytes: dé otro --memoria", cual(destino), kBytesMemoria));
    if (imagen.size() != kBytesMemoria && !terminaEn(destino.ruta, kDeMemoria)) {
        throw std::runtime_error(
            fmt::format("{} no parece una memoria, que mide {} bytes o termina en .rgt: dé otro --memoria",
                        cual(destino), kBytesMemoria));
    }
    if (const auto clase = otraClase(imagen); !clase.empty()) {
        throw std::runtime_error(fmt::format(
            "{} no es la memoria de un registrador, sino {}: dé otro --memoria", cual(destino), clase));
    }
    return imagen;
}

}  // namespace

MemoriaGuardada::MemoriaGuardada(fs::path ruta) : ruta_(std::move(ruta)) {
    // A file that cannot be written is told now and not after the first change.
    const auto destino = revisarDestino(ruta_, {.bytes = kBytesMemoria});
    nombre_ = reservarNombre(destino);
    if (!destino.previo) return;
    reservarArchivo();
    if (!archivo_) throw enUso(destino);
    leida_ = leer(destino);
}

void MemoriaGuardada::guardar(std::span<const std::uint8_t> imagen) {
    guardarAtomico(ruta_, imagen);
    reservarArchivo();
}

void MemoriaGuardada::reservarArchivo() {
    archivo_ = reservar("telvane-sim archivo", identidad(ruta_));
}

}  // namespace telvane
