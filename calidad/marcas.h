// What is doubtful about a sample. A mark changes no value and drops none.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "data/medidas.h"

namespace telvane {

// In the order of the exported columns.
enum class Canal : std::uint8_t {
    humedad,
    temperatura,
    dirViento,
    velViento,
    radSolar,
    presion,
    lluvia,
    evaporacion
};
inline constexpr std::size_t kCanales = 8;
inline constexpr std::array<std::string_view, kCanales> kNombresCanal = {
    "humedad", "temperatura", "dir_viento", "vel_viento", "rad_solar", "presion", "lluvia", "evaporacion"};
// Decimals of each channel's whole numbers in Medidas.
inline constexpr std::array<int, kCanales> kDecimalesCanal = {0, 1, 1, 1, 2, 1, 1, 2};

// In Medidas' own units, in the order of Canal.
constexpr std::array<std::int32_t, kCanales> valoresDe(const Medidas& m) {
    return {m.humedad,  m.temperatura, m.dirViento, m.velViento,
            m.radSolar, m.presion,     m.lluvia,    m.evaporacion};
}

enum class Marca : std::uint8_t {
    rango,  // no such weather
    salto,  // no such change in so short a time
    fijo    // stands still as weather does not
};
inline constexpr std::size_t kMarcas = 3;
inline constexpr std::array<std::string_view, kMarcas> kNombresMarca = {"rango", "salto", "fijo"};

// The marks of one sample.
class Marcas {
   public:
    constexpr void poner(Canal canal, Marca marca) { bits_ |= bit(canal, marca); }
    constexpr void ponerHueco() { bits_ |= kHueco; }
    constexpr void ponerConflicto() { bits_ |= kConflicto; }

    constexpr bool tiene(Canal canal, Marca marca) const { return (bits_ & bit(canal, marca)) != 0; }
    // Whether the channel has any mark.
    constexpr bool tiene(Canal canal) const {
        return (bits_ >> (static_cast<unsigned>(canal) * kMarcas) & ((1U << kMarcas) - 1)) != 0;
    }
    // Whether any channel has a mark.
    constexpr bool enAlgunCanal() const { return (bits_ & (kHueco - 1)) != 0; }
    constexpr bool hueco() const { return (bits_ & kHueco) != 0; }
    constexpr bool conflicto() const { return (bits_ & kConflicto) != 0; }
    constexpr bool ninguna() const { return bits_ == 0; }

    // "temperatura:rango", ...: channels in the order of the columns, marks in theirs, then hueco and
    // conflicto.
    std::vector<std::string> lista() const;
    // The list parted by single blanks.
    std::string texto() const;

    bool operator==(const Marcas&) const = default;

   private:
    static constexpr std::uint32_t bit(Canal canal, Marca marca) {
        return 1U << (static_cast<unsigned>(canal) * kMarcas + static_cast<unsigned>(marca));
    }
    static constexpr std::uint32_t kHueco = 1U << (kCanales * kMarcas);
    static constexpr std::uint32_t kConflicto = kHueco << 1;

    std::uint32_t bits_ = 0;
};

}  // namespace telvane
