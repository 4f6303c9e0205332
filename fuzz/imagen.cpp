// A memory image of any length and content, to every format.
#include "data/conversion.h"
#include "fuzz/azar.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* datos, std::size_t cuantos) {
    using namespace telvane;
    static Conversor conversor;
    Entrada entrada(datos, cuantos);
    const auto como = entrada.byte();
    const auto perfil = (como & 4) != 0 ? Perfil::ampliado : Perfil::estricto;
    const auto formato = kFormatos[(como & 3U) % kFormatos.size()].formato;
    const auto archivo =
        conversor.convertir(entrada.resto(), formato, perfil, {2026, 11, 20, std::chrono::hours(10)});
    const auto& r = archivo.recuento;
    // What the image does not reach counts as empty; the header's slots are not looked at.
    exigirQue(r.escritas + r.vacias + r.descartadas <= 2 * kUltimoBloque);
    exigirQue(r.texto().find(" muestra") != std::string::npos);
    return 0;
}
