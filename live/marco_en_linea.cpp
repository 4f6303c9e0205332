#include "live/marco_en_linea.h"

#include <array>
#include <cstdlib>

#include <fmt/format.h>

#include "link/dos_bytes.h"

namespace telvane {

namespace {

constexpr std::uint8_t kMaxAltoPresion = 3;
constexpr std::uint8_t kMaxAltoAnalogico = 3;
constexpr std::uint8_t kMaxDireccion = 160;  // 360 degrees

std::int32_t conSigno(unsigned alto, unsigned bajo) {
    return static_cast<std::int16_t>(static_cast<std::uint16_t>(alto * 256 + bajo));
}

// valor in units of 10^-escala, rounded half away from zero to this many decimals.
std::string redondeado(std::int32_t valor, int escala, int decimales) {
    std::int32_t divisor = 1;
    for (int i = decimales; i < escala; ++i) divisor *= 10;
    const std::int32_t entero = (std::abs(valor) + divisor / 2) / divisor;
    std::string cifras = fmt::format("{:0{}}", entero, decimales + 1);
    if (decimales > 0) cifras.insert(cifras.size() - static_cast<std::size_t>(decimales), 1, '.');
    return valor < 0 && entero != 0 ? "-" + cifras : cifras;
}

constexpr int kMilesimas = 3;
constexpr int kCienmilesimas = 5;

}  // namespace

MarcoEnLinea decodificarMarco(std::span<const std::uint8_t, kBytesMarco> bytes) {
    const auto par = [&](std::size_t lugar) -> std::int32_t {
        return static_cast<std::int16_t>(crudoDeDosBytes(bytes, lugar));
    };
    const bool presionNula = bytes[marco::kPresion] > kMaxAltoPresion;
    const unsigned alto = presionNula ? 0 : bytes[marco::kPresion];
    const unsigned bajo = presionNula ? 0 : bytes[marco::kPresion + 1];

    MarcoEnLinea leido;
    leido.humedad = par(marco::kHumedad) * 129 - 26445;          // (raw * 0.004 - 0.82) * 32.25
    leido.temperatura = par(marco::kTemperatura) * 100 - 37500;  // raw * 0.004 * 25 - 37.5
    leido.dirViento = bytes[marco::kDirViento] * 2250;
    leido.velViento = par(marco::kVelViento) * 200 - 25000;  // raw * 0.004 * 50 - 25
    leido.radSolar = par(marco::kRadSolar) * 264;            // raw * 0.004 * 0.66
    leido.presion = conSigno(alto, bajo + 98) * 899;
    leido.lluvia = par(marco::kLluvia) * 200;
    leido.evaporacion = par(marco::kEvaporacion) * 10;
    return leido;
}

unsigned canalesImposibles(std::span<const std::uint8_t, kBytesMarco> bytes) {
    constexpr std::array<std::size_t, 5> kCanales = {marco::kHumedad, marco::kTemperatura, marco::kDirViento,
                                                     marco::kVelViento, marco::kRadSolar};
    unsigned imposibles = 0;
    for (std::size_t i = 0; i < kCanales.size(); ++i) {
        const auto maximo = kCanales[i] == marco::kDirViento ? kMaxDireccion : kMaxAltoAnalogico;
        if (bytes[kCanales[i]] > maximo) imposibles |= 1u << i;
    }
    return imposibles;
}

TextosMarco textosMarco(const MarcoEnLinea& marco) {
    return {redondeado(marco.humedad, kMilesimas, 0),      redondeado(marco.temperatura, kMilesimas, 1),
            redondeado(marco.dirViento, kMilesimas, 1),    redondeado(marco.velViento, kMilesimas, 1),
            redondeado(marco.radSolar, kCienmilesimas, 3), redondeado(marco.presion, kMilesimas, 1),
            redondeado(marco.lluvia, kMilesimas, 1),       redondeado(marco.evaporacion, kMilesimas, 2)};
}

std::string lineasMarco(const TextosMarco& textos) {
    return fmt::format(
        "[RH%]={}%\r\n"
        "Temp[ºC]={}ºC\r\n"
        "Dir Viento [º]={}\r\n"
        "vel Viento [Km/h]={}\r\n"
        "Rad Solar kW/m2={}\r\n"
        "Presion Atm [kPa]={}\r\n"
        "Pluv [mm]={}\r\n"
        "Evaporacion={}\r\n",
        textos.humedad, textos.temperatura, textos.dirViento, textos.velViento, textos.radSolar,
        textos.presion, textos.lluvia, textos.evaporacion);
}

}  // namespace telvane
