#include "informe/cuentas.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace telvane::informe {

namespace {

constexpr double kMillonesimas = 1e6;

struct Vector {
    std::int32_t norte = 0;
    std::int32_t este = 0;
};

// Millionths of the unit vector of each byte that has a direction.
const std::array<Vector, 161>& vectores() {
    static const std::array<Vector, 161> kVectores = [] {
        std::array<Vector, 161> tabla{};
        for (std::size_t crudo = 1; crudo < tabla.size(); ++crudo) {
            const double angulo =
                gradosDesdeElNorte(static_cast<std::uint8_t>(crudo)) * std::numbers::pi / 180;
            tabla[crudo] = {.norte = static_cast<std::int32_t>(std::lround(std::cos(angulo) * kMillonesimas)),
                            .este = static_cast<std::int32_t>(std::lround(std::sin(angulo) * kMillonesimas))};
        }
        return tabla;
    }();
    return kVectores;
}

}  // namespace

std::size_t claseDe(std::int32_t velocidad) {
    std::size_t clase = 0;
    while (clase < kClasesViento.size() && velocidad >= kClasesViento[clase]) ++clase;
    return clase;
}

void CuentaCanal::agregar(const CuentaCanal& otra) {
    for (std::size_t i = 0; i < kMarcas; ++i) marcados[i] += otra.marcados[i];
    if (otra.valores == 0) return;
    if (valores == 0 || otra.minimo < minimo) {
        minimo = otra.minimo;
        cuandoMinimo = otra.cuandoMinimo;
        minimoMarcado = otra.minimoMarcado;
    }
    if (valores == 0 || otra.maximo > maximo) {
        maximo = otra.maximo;
        cuandoMaximo = otra.cuandoMaximo;
        maximoMarcado = otra.maximoMarcado;
    }
    suma += otra.suma;
    valoresMarcados += otra.valoresMarcados;
    valores += otra.valores;
}

void Cuentas::agregar(const Juzgada& juzgada, bool primeraDelSello) {
    const auto& [observacion, marcas, paso] = juzgada;
    ++muestras;
    if (primeraDelSello) {
        ++sellos;
        segundos += paso.tramo.count();
        if (paso.hueco) ++huecos;
        if (observacion.conflicto) ++conflictos;
    }
    const bool limpia = !marcas.enAlgunCanal();
    if (!limpia) ++marcadas;
    const auto valores = valoresDe(observacion.medidas);
    for (std::size_t i = 0; i < kCanales; ++i) {
        const auto canal = static_cast<Canal>(i);
        const bool marcado = !limpia && marcas.tiene(canal);
        if (marcado) {
            for (std::size_t m = 0; m < kMarcas; ++m) {
                if (marcas.tiene(canal, static_cast<Marca>(m))) ++canales[i].marcados[m];
            }
            if (marcas.tiene(canal, Marca::rango)) continue;
        }
        canales[i].agregar(valores[i], observacion.instante, marcado);
    }

    const auto velocidad = observacion.medidas.velViento;
    if (velocidad < kCalma) {
        ++calmas;
        return;
    }
    const auto crudo = observacion.medidas.crudoDirViento;
    const auto rumbo = rumboDe(crudo);
    if (!rumbo) {
        ++sinRumbo;
        return;
    }
    ++rumbos[*rumbo];
    if (marcas.tiene(Canal::velViento, Marca::rango)) return;
    haciaElNorte += std::int64_t{velocidad} * vectores()[crudo].norte;
    haciaElEste += std::int64_t{velocidad} * vectores()[crudo].este;
}

void Cuentas::agregar(const Cuentas& otras) {
    for (std::size_t i = 0; i < kCanales; ++i) canales[i].agregar(otras.canales[i]);
    muestras += otras.muestras;
    sellos += otras.sellos;
    faltan += otras.faltan;
    huecos += otras.huecos;
    conflictos += otras.conflictos;
    marcadas += otras.marcadas;
    segundos += otras.segundos;
    for (std::size_t i = 0; i < kRumbos; ++i) rumbos[i] += otras.rumbos[i];
    calmas += otras.calmas;
    sinRumbo += otras.sinRumbo;
    haciaElNorte += otras.haciaElNorte;
    haciaElEste += otras.haciaElEste;
}

std::optional<double> Cuentas::media(Canal canal) const {
    const auto& cuenta = (*this)[canal];
    if (cuenta.valores == 0) return std::nullopt;
    return static_cast<double>(cuenta.suma) / cuenta.valores /
           std::pow(10, kDecimalesCanal[static_cast<std::size_t>(canal)]);
}

std::optional<std::size_t> Cuentas::rumboDominante() const {
    const auto mayor = std::ranges::max_element(rumbos);
    if (*mayor == 0) return std::nullopt;
    return static_cast<std::size_t>(mayor - rumbos.begin());
}

std::optional<double> Cuentas::direccionMedia() const {
    if (haciaElNorte == 0 && haciaElEste == 0) return std::nullopt;
    const double grados = std::atan2(static_cast<double>(haciaElEste), static_cast<double>(haciaElNorte)) *
                          180 / std::numbers::pi;
    return grados < 0 ? grados + 360 : grados;
}

}  // namespace telvane::informe
