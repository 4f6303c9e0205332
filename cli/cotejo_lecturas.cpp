#include "cli/cotejo_lecturas.h"

#include <algorithm>

#include "cli/reloj_registrador.h"
#include "cli/textos_cli.h"
#include "data/muestra.h"
#include "data/registros.h"
#include "data/sello.h"
#include "loggerconfig/datos_config.h"

namespace telvane {

namespace {

constexpr std::size_t kRegistro = registro_muestra::kBytes;

bool borrado(std::span<const std::uint8_t> registro) {
    const auto todos = [&](std::uint8_t valor) {
        return std::all_of(registro.begin(), registro.end(), [&](std::uint8_t b) { return b == valor; });
    };
    return todos(0xFF) || todos(0x00);
}

// What the logger may have put meanwhile into a slot that was empty.
bool esMuestra(std::span<const std::uint8_t> registro) {
    return registro.size() == kRegistro && sello::bueno(registro.first<kRegistro>(), Perfil::ampliado);
}

// The decoder looks for samples from this byte on.
constexpr std::size_t kMuestras = kPrimeraRanura * kRegistro;

// The header's clock and the reserved bytes before the first samples may be the running logger's.
std::size_t firmes(std::size_t desde) {
    if (desde >= kMuestras) return kRegistro;
    if (desde >= registro_config::kReloj) return 0;
    return std::min(kRegistro, registro_config::kReloj - desde);
}

// Where none can be read it stands still.
bool relojesDeAcuerdo(std::span<const std::uint8_t> antes, std::span<const std::uint8_t> ahora,
                      std::chrono::nanoseconds transcurrido) {
    const auto uno = datosDeCabecera(antes);
    const auto otro = datosDeCabecera(ahora);
    if (uno.reloj == otro.reloj) return true;
    const auto antesEran = relojDe(uno);
    const auto ahoraSon = relojDe(otro);
    return antesEran && ahoraSon &&
           distancia(*ahoraSon, masTarde(*antesEran, transcurrido)) <= kToleranciaReloj;
}

}  // namespace

std::optional<std::size_t> primeraDiferencia(std::span<const std::uint8_t> antes,
                                             std::span<const std::uint8_t> ahora, std::size_t inicio) {
    const std::size_t comun = std::min(antes.size(), ahora.size());
    for (std::size_t desde = 0; desde < comun; desde += kRegistro) {
        const auto largo = std::min(kRegistro, comun - desde);
        const auto viejo = antes.subspan(desde, largo);
        const auto nuevo = ahora.subspan(desde, largo);
        const auto cuantos = static_cast<std::ptrdiff_t>(std::min(largo, firmes(inicio + desde)));
        if (std::equal(viejo.begin(), viejo.begin() + cuantos, nuevo.begin())) continue;
        if (inicio + desde >= kMuestras && borrado(viejo) && esMuestra(nuevo)) continue;
        return (inicio + desde) / kBytesBloque;
    }
    return std::nullopt;
}

bool mismaCabecera(std::span<const std::uint8_t> antes, std::span<const std::uint8_t> ahora,
                   std::chrono::nanoseconds transcurrido) {
    const auto reservados = [](std::span<const std::uint8_t> imagen) {
        return imagen.subspan(registro_config::kFin, kMuestras - registro_config::kFin);
    };
    return std::ranges::equal(reservados(antes), reservados(ahora)) &&
           relojesDeAcuerdo(antes, ahora, transcurrido);
}

}  // namespace telvane
