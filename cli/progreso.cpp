#include "cli/progreso.h"

#include <cmath>

#include <fmt/format.h>

#include "link/protocolo.h"

namespace telvane {

namespace {

using namespace std::chrono_literals;

constexpr auto kEntreDibujos = 200ms;
constexpr std::size_t kCasillas = 30;

std::string minutos(double segundos) {
    const auto enteros = std::lround(segundos);
    return fmt::format("{:02}:{:02}", enteros / 60, enteros % 60);
}

}  // namespace

Progreso::Progreso(Consola& consola, const Reloj& reloj, std::size_t total)
    : consola_(consola), reloj_(reloj), total_(total), inicio_(reloj.monotono()), dibujado_(inicio_) {}

void Progreso::avance(std::size_t hechos) {
    const auto ahora = reloj_.monotono();
    if (!consola_.hayTerminal() || (ahora - dibujado_ < kEntreDibujos && hechos != total_)) return;
    dibujado_ = ahora;
    consola_.progreso(barra(hechos, std::chrono::duration<double>(ahora - inicio_).count()));
}

std::string Progreso::barra(std::size_t hechos, double segundos) const {
    const std::size_t llenas = hechos * kCasillas / total_;
    const auto bloquesPorSegundo = segundos > 0 ? static_cast<double>(hechos) / segundos : 0.0;
    const auto faltan =
        bloquesPorSegundo > 0 ? static_cast<double>(total_ - hechos) / bloquesPorSegundo : 0.0;
    return fmt::format("[{:#<{}}{:.<{}}] {:3} %  {}/{} bloques  {:.1f} kB/s  faltan {}", "", llenas, "",
                       kCasillas - llenas, hechos * 100 / total_, hechos, total_,
                       bloquesPorSegundo * static_cast<double>(kBytesBloque) / 1000.0, minutos(faltan));
}

}  // namespace telvane
