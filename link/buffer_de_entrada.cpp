#include "link/buffer_de_entrada.h"

#include <algorithm>
#include <array>
#include <utility>

namespace telvane {

void BufferDeEntrada::llenar(PuertoSerie& puerto, std::size_t cota) {
    // What was taken goes, also on a line that always leaves something behind.
    bytes_.erase(bytes_.begin(), bytes_.begin() + static_cast<std::ptrdiff_t>(tomados_));
    tomados_ = 0;
    std::array<std::uint8_t, kTrozo> trozo;
    for (std::size_t i = 0; i < kTrozosDeUnaVez; ++i) {
        const auto leidos = puerto.leer(trozo);
        const std::size_t entran = std::min(leidos, cota - std::min(cota, bytes_.size()));
        bytes_.insert(bytes_.end(), trozo.begin(), trozo.begin() + static_cast<std::ptrdiff_t>(entran));
        if (entran < leidos) desbordado_ = true;
        if (leidos < trozo.size()) break;
    }
}

bool BufferDeEntrada::desbordado() {
    return std::exchange(desbordado_, false);
}

std::vector<std::uint8_t> BufferDeEntrada::tomar(std::size_t cuantos) {
    const auto desde = bytes_.begin() + static_cast<std::ptrdiff_t>(tomados_);
    const auto toma = std::min(cuantos, esperan());
    tomados_ += toma;
    return {desde, desde + static_cast<std::ptrdiff_t>(toma)};
}

void BufferDeEntrada::vaciar() {
    bytes_.clear();
    tomados_ = 0;
}

}  // namespace telvane
