// Sample records and images for the tests, field by field.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>

#include "data/decodificador.h"
#include "data/memoria.h"
#include "data/muestra.h"

namespace telvane {

using Sello = std::array<std::uint8_t, 6>;  // raw: hour, minute, second, day, month, year

inline constexpr Sello kSelloBueno = {0x17, 0x04, 0x09, 0x20, 0x11, 0x18};
inline constexpr Sello kSelloMalo = {0x17, 0x60, 0x09, 0x20, 0x11, 0x18};
inline constexpr Sello kSelloBorrado = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};

struct RegistroPrueba {
    Sello sello = kSelloBueno;
    std::uint16_t auxiliar1 = 0;
    std::uint16_t humedad = 205;
    std::uint16_t temperatura = 375;
    std::uint8_t viento = 0;
    std::uint16_t velViento = 125;
    std::uint16_t radSolar = 0;
    std::uint16_t presion = 0;
    std::uint8_t lluvia = 0;
    std::uint16_t auxiliar2 = 0;
    std::uint16_t evaporacion = 0;

    BytesMuestra bytes() const {
        BytesMuestra b{};
        std::copy(sello.begin(), sello.end(), b.begin());
        par(b, registro_muestra::kAuxiliar1, auxiliar1);
        par(b, registro_muestra::kHumedad, humedad);
        par(b, registro_muestra::kTemperatura, temperatura);
        b[registro_muestra::kDirViento] = viento;
        par(b, registro_muestra::kVelViento, velViento);
        par(b, registro_muestra::kRadSolar, radSolar);
        par(b, registro_muestra::kPresion, presion);
        b[registro_muestra::kLluvia] = lluvia;
        par(b, registro_muestra::kAuxiliar2, auxiliar2);
        par(b, registro_muestra::kEvaporacion, evaporacion);
        return b;
    }

   private:
    static void par(BytesMuestra& b, unsigned lugar, std::uint16_t crudo) {
        b[lugar] = static_cast<std::uint8_t>(crudo >> 8);
        b[lugar + 1] = static_cast<std::uint8_t>(crudo & 0xFF);
    }
};

inline void ponerRegistro(Memoria::Bloque bloque, unsigned mitad, const RegistroPrueba& registro) {
    const auto bytes = registro.bytes();
    std::copy(bytes.begin(), bytes.end(), bloque.begin() + mitad * registro_muestra::kBytes);
}

// Feeds one record to the half of a block and gives the lines that stand then.
inline std::string darRegistro(Decodificador& decodificador, unsigned mitad, const RegistroPrueba& registro) {
    const auto bytes = registro.bytes();
    for (unsigned i = 0; i < bytes.size(); ++i) {
        decodificador.proceso(static_cast<int>(mitad * registro_muestra::kBytes + i), bytes[i]);
    }
    return decodificador.lineaMuestras;
}

// A decoder past its first record, which is never written.
inline Decodificador decodificadorEnMarcha(Perfil perfil = Perfil::estricto) {
    Decodificador decodificador(perfil);
    darRegistro(decodificador, 0, {});
    decodificador.lineaMuestras.clear();
    return decodificador;
}

inline std::string lineaDe(const RegistroPrueba& registro, Perfil perfil = Perfil::estricto) {
    auto decodificador = decodificadorEnMarcha(perfil);
    return darRegistro(decodificador, 0, registro);
}

}  // namespace telvane
