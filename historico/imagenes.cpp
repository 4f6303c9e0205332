#include "historico/imagenes.h"

#include <algorithm>
#include <set>
#include <utility>

#include <fmt/format.h>

namespace telvane {

ImagenDanada::ImagenDanada(const Huella& huella, const std::string& motivo)
    : ErrorImagen(fmt::format("la imagen {} está dañada en el archivo: {}; vea telvane-historico comprobar",
                              textoDe(huella), motivo)),
      motivo_(motivo) {}

Imagenes::Abierta* Imagenes::buscar(const Huella& huella) {
    const auto lugar = std::find_if(abiertas_.begin(), abiertas_.end(),
                                    [&](const Abierta& a) { return a.huella == huella; });
    if (lugar == abiertas_.end()) return nullptr;
    abiertas_.splice(abiertas_.begin(), abiertas_, lugar);
    return &abiertas_.front();
}

Imagenes::Abierta& Imagenes::recordar(Abierta abierta) {
    constexpr std::size_t kAbiertas = 4;
    abiertas_.push_front(std::move(abierta));
    if (abiertas_.size() > kAbiertas) abiertas_.pop_back();
    return abiertas_.front();
}

Imagenes::Abierta& Imagenes::abrir(const Huella& huella) {
    const auto danada = [&](const std::string& que) { return ImagenDanada(huella, que); };
    // Down to one that stands alone or is at hand, and up again. As a rule the base is at hand; where it is
    // not, all that is below it is needed.
    constexpr std::size_t kDeUnaVez = 64;
    Almacen::Cadena pila;
    Abierta* abierta = nullptr;
    std::set<Huella> vistas;
    for (auto cual = huella; (abierta = buscar(cual)) == nullptr;) {
        auto tramo = almacen_.cadena(estacion_, cual, pila.empty() ? 1 : kDeUnaVez);
        if (tramo.empty() || tramo.front().first != cual) {
            throw danada(cual == huella ? std::string(ImagenDanada::kSinContenido)
                                        : fmt::format("falta {}", textoDe(cual)));
        }
        for (auto& [suya, guardada] : tramo) {
            if (suya != cual) break;
            if (!vistas.insert(suya).second) throw danada("su cadena no termina");
            cual = guardada.base.value_or(Huella{});
            pila.emplace_back(suya, std::move(guardada));
        }
        if (!pila.back().second.base) break;
    }
    for (; !pila.empty(); pila.pop_back()) {
        const auto& [cual, guardada] = pila.back();
        try {
            const auto base = guardada.base ? BytesImagen(*abierta->bytes) : BytesImagen{};
            auto bytes = reserva_.tomar();
            descompresor_.abrir(guardada.datos, base, *bytes);
            // What is kept of the depth only follows from the chain.
            const int profundidad = guardada.base ? abierta->profundidad + 1 : 0;
            abierta = &recordar({.huella = cual,
                                 .bytes = std::move(bytes),
                                 .profundidad = profundidad,
                                 .conSuma = conSuma(guardada.datos)});
        } catch (const ErrorCompresion& error) {
            throw danada(error.what());
        }
    }
    return *abierta;
}

// Of a chain the last one tells: it is whole where all of them are.
void Imagenes::Abierta::comprobar() {
    if (!comprobada && huellaDe(*bytes) != huella) throw ImagenDanada(huella, "su SHA-256 no es el suyo");
    comprobada = true;
}

const std::vector<std::uint8_t>& Imagenes::bytes(const Huella& huella) {
    auto& abierta = abrir(huella);
    abierta.comprobar();
    return *abierta.bytes;
}

const std::vector<std::uint8_t>* Imagenes::siSeLee(const Huella& huella) {
    try {
        return &bytes(huella);
    } catch (const ErrorImagen&) {
        return nullptr;
    }
}

std::shared_ptr<const std::vector<std::uint8_t>> Imagenes::compartida(const Huella& huella) {
    try {
        auto& abierta = abrir(huella);
        if (!abierta.conSuma) abierta.comprobar();
        return abierta.bytes;
    } catch (const ErrorImagen&) {
        return nullptr;
    }
}

}  // namespace telvane
