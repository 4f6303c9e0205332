#include "consola/progreso.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "platform/cp1252.h"

namespace telvane {

namespace {

using namespace std::chrono_literals;

constexpr auto kEntreDibujos = 200ms;
constexpr std::size_t kCasillas = 30;
constexpr std::size_t kMenosCasillas = 5;

std::string minutos(double segundos) {
    const auto enteros = std::lround(segundos);
    return fmt::format("{:02}:{:02}", enteros / 60, enteros % 60);
}

}  // namespace

Progreso::Progreso(Consola& consola, const Reloj& reloj, std::size_t total, Unidad unidad)
    : consola_(consola),
      reloj_(reloj),
      total_(std::max<std::size_t>(total, 1)),
      unidad_(unidad),
      inicio_(reloj.monotono()),
      dibujado_(inicio_) {}

void Progreso::avance(std::size_t hechos) {
    const auto ahora = reloj_.monotono();
    if (!consola_.hayTerminal() || (ahora - dibujado_ < kEntreDibujos && hechos != total_)) return;
    dibujado_ = ahora;
    consola_.progreso(barra(hechos, std::chrono::duration<double>(ahora - inicio_).count()));
}

// The bar takes what the numbers leave of the line, and is left out where that is next to nothing.
std::string Progreso::barra(std::size_t hechos, double segundos) const {
    const auto porSegundo = segundos > 0 ? static_cast<double>(hechos) / segundos : 0.0;
    const auto faltan = porSegundo > 0 ? static_cast<double>(total_ - hechos) / porSegundo : 0.0;
    const auto velocidad =
        unidad_.bytes == 0
            ? std::string()
            : fmt::format("  {:.1f} kB/s", porSegundo * static_cast<double>(unidad_.bytes) / 1000.0);
    auto cifras = fmt::format("{:3} %  {}/{} {}{}  faltan {}", hechos * 100 / total_, hechos, total_,
                              unidad_.nombre, velocidad, minutos(faltan));
    constexpr std::size_t kMarcas = 3;  // "[] "
    const auto ocupa = caracteres(cifras) + kMarcas;
    const auto sitio = consola_.ancho() > ocupa ? std::min(consola_.ancho() - ocupa, kCasillas) : 0;
    if (sitio < kMenosCasillas) return cifras;
    const std::size_t llenas = hechos * sitio / total_;
    return fmt::format("[{:#<{}}{:.<{}}] {}", "", llenas, "", sitio - llenas, cifras);
}

}  // namespace telvane
