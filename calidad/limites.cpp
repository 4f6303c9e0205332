#include "calidad/limites.h"

#include <cmath>

namespace telvane {

namespace {

using namespace std::chrono_literals;

Millonesimas u(double unidades) {
    return std::llround(unidades * kUnidad);
}

}  // namespace

// Published tests that the numbers follow or lie within:
// [WMO]   I. Zahumensky, Guidelines on Quality Control Procedures for Data from Automatic Weather
//         Stations, WMO CBS/OPAG-IOS (2004), taken into WMO-No. 488: plausible values, plausible change.
// [NWS]   NWS TSP 88-21-R2 (1994), as MADIS publishes its surface checks.
// [OK]    Shafer, Fiebrich, Arndt, Fredrickson, Hughes: Quality Assurance Procedures in the Oklahoma
//         Mesonetwork, J. Atmos. Oceanic Technol. 17 (2000), 474-494: range and step tests.
// [EPA]   Meteorological Monitoring Guidance for Regulatory Modeling Applications, EPA-454/R-99-005 (2000),
//         suggested data screening criteria: stretches that do not vary.
const Limites& limitesUsuales() {
    static const Limites kLimites = [] {
        Limites l;
        const auto en = [](Canal canal) { return static_cast<std::size_t>(canal); };
        // Air temperature, ºC: -75 to 135 ºF, within [WMO] -80 to 60; step as [OK]; 12 hours within 0.5 as
        // [EPA].
        l.rango[en(Canal::temperatura)] = {u(-59.4), u(57.2)};
        l.salto[en(Canal::temperatura)] = u(10);
        l.fijo[en(Canal::temperatura)] = {.dura = 12h, .amplitud = u(0.5)};
        // Relative humidity, %: [WMO] 0 to 100, and what a good sensor reads beyond it in fog; [NWS] has a
        // step of 50 in an hour.
        l.rango[en(Canal::humedad)] = {u(0), u(105)};
        l.salto[en(Canal::humedad)] = u(60);
        // Pressure at the station, kPa: within [WMO] 50 to 110; step of 10 hPa as [NWS] and [OK].
        l.rango[en(Canal::presion)] = {u(60.0), u(104.9)};
        l.salto[en(Canal::presion)] = u(1.0);
        // Wind speed, km/h: 64 m/s, within [WMO] 75; step of 40 m/s as [OK]; 3 hours within 0.1 m/s as [EPA],
        // of a wind above 0.5 m/s, because a calm may last.
        l.rango[en(Canal::velViento)] = {u(0), u(231)};
        l.salto[en(Canal::velViento)] = u(144);
        l.fijo[en(Canal::velViento)] = {.dura = 3h, .amplitud = u(0.36), .viento = u(1.8)};
        // Wind direction, degrees: 3 hours within 1 as [EPA], in a wind that turns a vane.
        l.fijo[en(Canal::dirViento)] = {.dura = 3h, .amplitud = u(1), .viento = u(1.8)};
        // Global radiation, kW/m2: as [OK], within [WMO] 1.6.
        l.rango[en(Canal::radSolar)] = {u(0), u(1.5)};
        // Rain, mm in 15 minutes: half an inch, far within [WMO] 40 in a minute.
        l.rango[en(Canal::lluvia)] = {u(0), u(12.7)};
        return l;
    }();
    return kLimites;
}

}  // namespace telvane
