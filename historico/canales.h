// A record's channels apart, as the columns of a table keep them: raw counts as whole numbers, so that a
// query can read them, and what they leave over. In this order they sort as the record's bytes do.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "data/medidas.h"
#include "data/muestra.h"
#include "data/sello.h"
#include "serie_temporal/instante.h"

namespace telvane {

struct CanalesCrudos {
    static constexpr std::size_t kCuantos = 11;
    static constexpr std::size_t kPrimerByteResto = 25;

    std::array<std::uint16_t, kCuantos> crudos{};
    // The bytes behind the channels, without the zeros at their end.
    std::array<std::uint8_t, registro_muestra::kBytes - kPrimerByteResto> resto{};
    std::size_t largoResto = 0;
};

// Offset and bytes of each column.
struct LugarDeCanal {
    unsigned desde;
    unsigned bytes;
};
inline constexpr std::array<LugarDeCanal, CanalesCrudos::kCuantos> kLugares = {
    {{registro_muestra::kAuxiliar1, 2},
     {registro_muestra::kHumedad, 2},
     {registro_muestra::kTemperatura, 2},
     {registro_muestra::kDirViento, 1},
     {registro_muestra::kVelViento, 2},
     {registro_muestra::kRadSolar, 2},
     {registro_muestra::kPresion, 2},
     {registro_muestra::kLluvia, 1},
     {20, 1},
     {registro_muestra::kAuxiliar2, 2},
     {registro_muestra::kEvaporacion, 2}}};

inline CanalesCrudos canalesDe(BytesMuestraConst registro) {
    CanalesCrudos c;
    for (std::size_t i = 0; i < kLugares.size(); ++i) {
        const auto [desde, bytes] = kLugares[i];
        c.crudos[i] = bytes == 2 ? crudoDeDosBytes(registro, desde) : registro[desde];
    }
    for (std::size_t i = 0; i < c.resto.size(); ++i) {
        c.resto[i] = registro[CanalesCrudos::kPrimerByteResto + i];
        if (c.resto[i] != 0) c.largoResto = i + 1;
    }
    return c;
}

// The stamp's six bytes.
inline void escribirSello(std::span<std::uint8_t, registro_muestra::kBytes> registro, Instante instante) {
    const auto fecha = fechaDe(instante);
    const auto hora = horaDe(instante);
    const std::array<int, 6> partes = {hora.hora, hora.minuto, hora.segundo,
                                       fecha.dia, fecha.mes,   fecha.anio % 100};
    std::transform(partes.begin(), partes.end(), registro.begin(), [](int n) { return empacarBcd(n); });
}

inline BytesMuestra registroDe(Instante instante, const CanalesCrudos& canales) {
    BytesMuestra registro{};
    escribirSello(registro, instante);
    for (std::size_t i = 0; i < kLugares.size(); ++i) {
        const auto [desde, bytes] = kLugares[i];
        if (bytes == 2) registro[desde] = static_cast<std::uint8_t>(canales.crudos[i] >> 8);
        registro[desde + bytes - 1] = static_cast<std::uint8_t>(canales.crudos[i] & 0xFF);
    }
    std::copy_n(canales.resto.begin(), canales.largoResto,
                registro.begin() + CanalesCrudos::kPrimerByteResto);
    return registro;
}

}  // namespace telvane
