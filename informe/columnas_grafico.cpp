#include "informe/columnas_grafico.h"

#include <algorithm>
#include <cmath>

namespace telvane::informe {

void Columna::Marcados::agregar(std::int32_t valor) {
    minimo = hay ? std::min(minimo, valor) : valor;
    maximo = hay ? std::max(maximo, valor) : valor;
    hay = true;
}

namespace {

constexpr std::size_t kPasos = 160;
constexpr std::size_t kPasosDelSector = 10;
constexpr std::size_t kTramosDistinguibles = 9000;

// salto: from one step that is looked at to the next.
void agregarTramos(std::vector<ColumnasGrafico::TramoDeRumbos>& tramos, std::size_t columna,
                   const ColumnasGrafico::Rumbos& rumbos, std::size_t salto) {
    for (std::size_t paso = 0; paso < kPasos; paso += salto) {
        if (!rumbos[paso]) continue;
        auto ultimo = paso;
        while (ultimo + salto < kPasos && rumbos[ultimo + salto]) ultimo += salto;
        tramos.push_back({.columna = columna, .desde = paso, .hasta = ultimo});
        paso = ultimo;
    }
}

ColumnasGrafico::Rumbos sectoresDe(const std::array<std::uint32_t, kRumbos>& veces) {
    ColumnasGrafico::Rumbos sectores;
    for (std::size_t r = 0; r < kRumbos; ++r) sectores.set(r * kPasosDelSector, veces[r] > 0);
    return sectores;
}

}  // namespace

std::optional<std::vector<ColumnasGrafico::TramoDeRumbos>> ColumnasGrafico::tramosDistintos() const {
    std::vector<TramoDeRumbos> tramos;
    for (std::size_t i = 0; i < rumbos_.size(); ++i) {
        if (rumbos_[i].any()) agregarTramos(tramos, i, rumbos_[i], 1);
    }
    if (tramos.size() > kTramosDistinguibles) return std::nullopt;
    return tramos;
}

std::vector<ColumnasGrafico::TramoDeRumbos> ColumnasGrafico::tramosDeRumbos() const {
    if (auto distintos = tramosDistintos()) return *distintos;
    std::vector<TramoDeRumbos> tramos;
    for (std::size_t i = 0; i < rumbos_.size(); ++i) {
        if (rumbos_[i].any()) agregarTramos(tramos, i, sectoresDe(vecesPorRumbo_[i]), kPasosDelSector);
    }
    return tramos;
}

std::vector<ColumnasGrafico::RumboDeColumna> ColumnasGrafico::dominantes() const {
    std::vector<RumboDeColumna> todos;
    for (std::size_t i = 0; i < rumbos_.size(); ++i) {
        const auto& veces = vecesPorRumbo_[i];
        const auto mayor = std::ranges::max_element(veces);
        if (*mayor == 0) continue;
        todos.push_back(
            {.columna = i, .paso = static_cast<std::size_t>(mayor - veces.begin()) * kPasosDelSector});
    }
    return todos;
}

ColumnasGrafico::ColumnasGrafico(const Plazo& plazo)
    : plazo_(plazo),
      dura_(static_cast<double>(std::max<std::int64_t>(plazo.dura().count(), 1))),
      rumbos_(kColumnas),
      vecesPorRumbo_(kColumnas),
      cortadas_(kColumnas),
      conflictos_(kColumnas) {
    for (auto& canal : canales_) canal.resize(kColumnas);
}

std::size_t ColumnasGrafico::columnaDe(Instante momento) {
    if (momento < fin_) return columna_;
    columna_ = std::min(static_cast<std::size_t>(lugar(momento)), kColumnas - 1);
    // No moment before it lies further right.
    const auto dura = plazo_.dura().count();
    fin_ = plazo_.desde + std::chrono::seconds(static_cast<std::int64_t>(columna_ + 1) * dura /
                                               static_cast<std::int64_t>(kColumnas));
    return columna_;
}

void ColumnasGrafico::agregar(const Juzgada& juzgada) {
    const auto& [observacion, marcas, paso] = juzgada;
    const auto columna = columnaDe(observacion.instante);
    if (paso.hueco && ultima_ && *ultima_ != observacion.instante) {
        const auto antes = lugar(*ultima_);
        if (static_cast<std::size_t>(antes) != columna) {
            cortadas_[columna] = true;
            vacios_.push_back({.desde = antes, .hasta = lugar(observacion.instante)});
        }
    }
    ultima_ = observacion.instante;
    if (observacion.conflicto) conflictos_[columna] = true;
    const bool limpia = !marcas.enAlgunCanal();
    auto valores = valoresDe(observacion.medidas);
    // Shown clockwise.
    auto& direccion = valores[static_cast<std::size_t>(Canal::dirViento)];
    direccion = (2 * 3600 - direccion) % 3600;
    for (std::size_t i = 0; i < kCanales; ++i) {
        const auto canal = static_cast<Canal>(i);
        auto& c = canales_[i][columna];
        const auto valor = valores[i];
        if (!limpia && marcas.tiene(canal)) {
            for (std::size_t m = 0; m < kMarcas; ++m) {
                if (marcas.tiene(canal, static_cast<Marca>(m))) c.marcados[m].agregar(valor);
            }
            if (marcas.tiene(canal, Marca::rango)) continue;
        }
        c.agregar(valor);
    }
    const auto crudo = observacion.medidas.crudoDirViento;
    const auto rumbo = rumboDe(crudo);
    if (observacion.medidas.velViento < kCalma || !rumbo) return;
    rumbos_[columna].set((160U - crudo) % 160U);
    ++vecesPorRumbo_[columna][*rumbo];
}

}  // namespace telvane::informe
