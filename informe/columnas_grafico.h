// What a chart draws: the period in a thousand columns, each with the extremes of its samples, so that no
// spike gets lost, however many samples there are.
#pragma once

#include <algorithm>
#include <array>
#include <bitset>
#include <cstdint>
#include <optional>
#include <vector>

#include "informe/cuentas.h"
#include "informe/periodo.h"

namespace telvane::informe {

inline constexpr std::size_t kColumnas = 1000;

struct Columna {
    std::int32_t minimo = 0;
    std::int32_t maximo = 0;
    std::int64_t suma = 0;
    std::uint32_t valores = 0;  // those marked rango are none
    // Extremes of the values with each mark.
    struct Marcados {
        std::int32_t minimo = 0;
        std::int32_t maximo = 0;
        bool hay = false;
        void agregar(std::int32_t valor);
    };
    std::array<Marcados, kMarcas> marcados;

    void agregar(std::int32_t valor) {
        minimo = valores == 0 ? valor : std::min(minimo, valor);
        maximo = valores == 0 ? valor : std::max(maximo, valor);
        suma += valor;
        ++valores;
    }
};

class ColumnasGrafico {
   public:
    explicit ColumnasGrafico(const Plazo& plazo);

    // In order of time; all within the period.
    void agregar(const Juzgada& juzgada);

    const std::vector<Columna>& canal(Canal c) const { return canales_[static_cast<std::size_t>(c)]; }
    // Whether a gap lies between the column's first sample and the last one before the column.
    bool cortada(std::size_t columna) const { return cortadas_[columna]; }
    // Directions at which wind blew, in steps of 2.25 degrees clockwise from north: 0 to 159.
    using Rumbos = std::bitset<160>;
    const std::vector<Rumbos>& rumbos() const { return rumbos_; }
    // The same as stretches of neighbouring steps, column by column. Where they would be too many to be told
    // apart, each direction stands at the middle of its sector.
    struct TramoDeRumbos {
        std::size_t columna = 0;
        std::size_t desde = 0;
        std::size_t hasta = 0;  // included
    };
    std::vector<TramoDeRumbos> tramosDeRumbos() const;
    // Whether they stand at the middles of their sectors; then they fill the chart, and only which one is the
    // most frequent of a column says anything.
    bool porSectores() const { return !tramosDistintos(); }
    struct RumboDeColumna {
        std::size_t columna = 0;
        std::size_t paso = 0;
    };
    std::vector<RumboDeColumna> dominantes() const;
    // Stretches without samples, in columns; each is one column wide or wider, or goes over a column's end.
    struct Vacio {
        double desde = 0;
        double hasta = 0;
    };
    const std::vector<Vacio>& vacios() const { return vacios_; }
    // Columns that hold a stamp in conflict.
    const std::vector<bool>& conflictos() const { return conflictos_; }

    double lugar(Instante momento) const {
        return static_cast<double>((momento - plazo_.desde).count()) * kColumnas / dura_;
    }

   private:
    std::size_t columnaDe(Instante momento);
    std::optional<std::vector<TramoDeRumbos>> tramosDistintos() const;

    Plazo plazo_;
    double dura_;
    std::array<std::vector<Columna>, kCanales> canales_;
    std::vector<Rumbos> rumbos_;
    std::vector<std::array<std::uint32_t, kRumbos>> vecesPorRumbo_;
    std::vector<bool> cortadas_;
    std::vector<bool> conflictos_;
    std::vector<Vacio> vacios_;
    std::optional<Instante> ultima_;
    std::size_t columna_ = 0;  // of the last one, with the moment at which it ends
    Instante fin_ = Instante::min();
};

}  // namespace telvane::informe
