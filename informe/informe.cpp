#include "informe/informe.h"

#include "data/sello.h"
#include "platform/cp1252.h"

namespace telvane::informe {

void tomarCabecera(EstacionInformada& estacion, std::span<const std::uint8_t> cabecera) {
    namespace rc = registro_config;
    std::size_t lugar = rc::kUsuario;
    for (std::size_t i = 0; i < kAnchos.size(); ++i) {
        const auto ancho = static_cast<std::size_t>(kAnchos[i]);
        if (cabecera.size() < lugar + ancho) return;
        const auto campo = cabecera.subspan(lugar, ancho);
        // What was never written is no text.
        const bool borrado = std::ranges::all_of(campo, [](auto b) { return b == 0xFF; }) ||
                             std::ranges::all_of(campo, [](auto b) { return b == 0x00; });
        if (!borrado) estacion.textos[i] = utf8DeCp1252(campo);
        lugar += ancho;
    }
    if (cabecera.size() < rc::kFin) return;
    if (const auto indice = indiceIntervalo(cabecera[rc::kIntervalo])) {
        estacion.intervalo = kIntervalos[*indice].minutos;
    }
    BytesMuestra comoSello{};
    std::copy_n(cabecera.begin() + rc::kReloj, rc::kFin - rc::kReloj, comoSello.begin());
    if (sello::bueno(comoSello, Perfil::ampliado)) estacion.reloj = instanteDe(comoSello);
}

}  // namespace telvane::informe
