// Sample records and images for the tests, field by field.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "data/decodificador.h"
#include "data/linea_muestra.h"
#include "data/memoria.h"
#include "data/muestra.h"
#include "link/dos_bytes.h"

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
        ponerDosBytes(b, registro_muestra::kAuxiliar1, auxiliar1);
        ponerDosBytes(b, registro_muestra::kHumedad, humedad);
        ponerDosBytes(b, registro_muestra::kTemperatura, temperatura);
        b[registro_muestra::kDirViento] = viento;
        ponerDosBytes(b, registro_muestra::kVelViento, velViento);
        ponerDosBytes(b, registro_muestra::kRadSolar, radSolar);
        ponerDosBytes(b, registro_muestra::kPresion, presion);
        b[registro_muestra::kLluvia] = lluvia;
        ponerDosBytes(b, registro_muestra::kAuxiliar2, auxiliar2);
        ponerDosBytes(b, registro_muestra::kEvaporacion, evaporacion);
        return b;
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

// The texts of one record, written into exactly the promised room: a sanitizer sees every byte beyond it.
inline std::string lineaDe(BytesMuestraConst registro, bool evaporacion) {
    std::vector<char> sitio(kLineaMaxima);
    return {sitio.data(), escribirLinea(sitio.data(), registro, evaporacion)};
}
inline std::string objetoDe(BytesMuestraConst registro, bool evaporacion) {
    std::vector<char> sitio(kObjetoMaximo);
    return {sitio.data(), escribirObjeto(sitio.data(), registro, evaporacion)};
}

}  // namespace telvane
