// What the channels of a sample record say, as whole numbers: exact, and what every writer and archive starts
// from.
#pragma once

#include <cstdint>

#include "data/conversiones.h"
#include "data/muestra.h"
#include "link/dos_bytes.h"

namespace telvane {

// Each value in units of the last decimal that the exports show.
struct Medidas {
    std::int32_t humedad = 0;         // % RH
    std::int32_t temperatura = 0;     // tenths of ºC
    std::int32_t dirViento = 0;       // tenths of a degree, as the logger counts: growing towards the west
    std::uint8_t crudoDirViento = 0;  // the byte that the compass point is matched on
    std::int32_t velViento = 0;       // tenths of km/h
    std::int32_t radSolar = 0;        // hundredths of kW/m2
    std::int32_t presion = 0;         // tenths of kPa
    std::int32_t lluvia = 0;          // tenths of mm in the interval
    std::int32_t evaporacion = 0;     // hundredths of mm in the interval; evaporation variant only
    std::int32_t auxiliar1 = 0;       // tenths; never exported
    std::int32_t auxiliar2 = 0;       // hundredths; evaporation variant only, never exported
    bool operator==(const Medidas&) const = default;
};

constexpr Medidas medidas(BytesMuestraConst r) {
    namespace rm = registro_muestra;
    namespace cv = conversiones;
    return {.humedad = cv::humedad(crudoDeDosBytes(r, rm::kHumedad)),
            .temperatura = cv::temperatura(crudoDeDosBytes(r, rm::kTemperatura)),
            .dirViento = cv::dirViento(r[rm::kDirViento]),
            .crudoDirViento = r[rm::kDirViento],
            .velViento = cv::velViento(crudoDeDosBytes(r, rm::kVelViento)),
            .radSolar = cv::radSolar(crudoDeDosBytes(r, rm::kRadSolar)),
            .presion = cv::presion(crudoDeDosBytes(r, rm::kPresion)),
            .lluvia = cv::lluvia(r[rm::kLluvia]),
            .evaporacion = cv::evaporacion(crudoDeDosBytes(r, rm::kEvaporacion)),
            .auxiliar1 = cv::auxiliar1(crudoDeDosBytes(r, rm::kAuxiliar1)),
            .auxiliar2 = cv::auxiliar2(crudoDeDosBytes(r, rm::kAuxiliar2))};
}

}  // namespace telvane
