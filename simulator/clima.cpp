#include "simulator/clima.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "link/dos_bytes.h"
#include "loggerconfig/datos_config.h"

namespace telvane {

namespace {

constexpr double kHora = 3600.0;
constexpr double kDia = 24 * kHora;
constexpr double kAnio = 365.2425 * kDia;
constexpr double kVuelta = 2 * std::numbers::pi;

// The farm: 32º 53' S. The sun stands highest at 13:35 of the clock there.
constexpr double kLatitud = -32.883 * std::numbers::pi / 180;
constexpr double kMediodia = 13.58 * kHora;
// The warmest days come some three weeks after the longest one.
constexpr double kDiaMasCalido = 15 * kDia;
constexpr double kHoraMasCalida = 16 * kHora;

// Rain comes in showers; each stretch of this length holds at most one.
constexpr double kTramoLluvia = 36 * kHora;

double hastaUno(double x) {
    return std::clamp(x, 0.0, 1.0);
}

// 1 at the middle of summer, -1 at the middle of winter.
double estacion(double segundos) {
    return std::cos(kVuelta * (segundos - kDiaMasCalido) / kAnio);
}

// Sine of the sun's height.
double alturaDelSol(double segundos) {
    const double declinacion = -0.4091 * std::cos(kVuelta * (segundos + 10 * kDia) / kAnio);
    const double angulo = kVuelta * (std::fmod(segundos, kDia) - kMediodia) / kDia;
    return std::sin(kLatitud) * std::sin(declinacion) +
           std::cos(kLatitud) * std::cos(declinacion) * std::cos(angulo);
}

std::uint64_t mezclar(std::uint64_t x) {
    x += 0x9E3779B97F4A7C15u;
    x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9u;
    x = (x ^ (x >> 27)) * 0x94D049BB133111EBu;
    return x ^ (x >> 31);
}

// Nearest raw value that two bytes hold.
std::uint16_t crudo(double valor) {
    return static_cast<std::uint16_t>(std::lround(std::clamp(valor, 0.0, 65535.0)));
}

// The conversions of the readings, turned round. Humidity, temperature and wind are sensor volts of 4 mV a
// count.
std::uint16_t crudoHumedad(double porciento) {
    return crudo((porciento / 32.25 + 0.82) / 0.004);
}
std::uint16_t crudoTemperatura(double grados) {
    return crudo((grados / 25.0 + 1.5) / 0.004);
}
std::uint16_t crudoViento(double kmh) {
    return crudo((kmh / 50.0 + 0.5) / 0.004);
}
std::uint16_t crudoPresion(double kpa) {
    return crudo(kpa / 0.899 - 98.0);
}
std::uint16_t crudoEvaporacion(double mm) {
    return crudo(mm / 0.01);
}
double pasosDeLluvia(double mm) {
    return mm / 0.2;
}

// Auxiliary inputs of the station: battery volts and its panel's.
constexpr double kBateria = 12.8;
constexpr double kPanel = 13.6;

}  // namespace

SegundosCiviles segundosCiviles(const FechaHora& momento) {
    using namespace std::chrono;
    // Months and days beyond their range carry on.
    const auto mes = year(momento.anio) / month(1) + months(momento.mes - 1);
    return (local_days(mes / 1) + days(momento.dia - 1)).time_since_epoch() + floor<seconds>(momento.deDia);
}

FechaHora fechaHoraDe(std::chrono::nanoseconds civil) {
    using namespace std::chrono;
    const auto dia = floor<days>(civil);
    const year_month_day fecha{local_days(dia)};
    return {static_cast<int>(fecha.year()), static_cast<int>(static_cast<unsigned>(fecha.month())),
            static_cast<int>(static_cast<unsigned>(fecha.day())), civil - dia};
}

std::array<std::uint8_t, 6> relojBcd(const FechaHora& momento) {
    const auto deDia = std::chrono::floor<std::chrono::seconds>(momento.deDia).count();
    return {empacarBcd(static_cast<int>(deDia / 3600)),
            empacarBcd(static_cast<int>(deDia / 60 % 60)),
            empacarBcd(static_cast<int>(deDia % 60)),
            empacarBcd(momento.dia),
            empacarBcd(momento.mes),
            empacarBcd(momento.anio % 100)};
}

FechaHora fechaHoraBcd(std::span<const std::uint8_t, 6> bytes) {
    const auto numero = [&](std::size_t i) { return (bytes[i] >> 4) * 10 + (bytes[i] & 0x0F); };
    using namespace std::chrono;
    const FechaHora fecha{2000 + numero(5), numero(4), numero(3), nanoseconds(0)};
    return fechaHoraDe(segundosCiviles(fecha) + hours(numero(0)) + minutes(numero(1)) + seconds(numero(2)));
}

// A number from 0 to 1 that belongs to the place.
double Clima::azar(Canal canal, std::int64_t lugar) const {
    const auto clave = (static_cast<std::uint64_t>(semilla_) << 32) | static_cast<std::uint32_t>(canal);
    return static_cast<double>(mezclar(mezclar(clave) ^ static_cast<std::uint64_t>(lugar)) >> 11) * 0x1p-53;
}

// A smooth course from -1 to 1 that bends about once a period.
double Clima::onda(Canal canal, double segundos, double periodo) const {
    const double x = segundos / periodo;
    const double base = std::floor(x);
    const double t = x - base;
    const auto lugar = static_cast<std::int64_t>(base);
    return 2 * std::lerp(azar(canal, lugar), azar(canal, lugar + 1), t * t * (3 - 2 * t)) - 1;
}

double Clima::lluviaEn(double segundos) const {
    const auto tramo = static_cast<std::int64_t>(std::floor(segundos / kTramoLluvia));
    const auto suerte = [&](int cual) { return azar(Canal::lluvia, tramo * 4 + cual); };
    // The summer's storms: two stretches in five have one, against one in ten of the winter.
    if (suerte(0) > 0.25 + 0.15 * estacion(segundos)) return 0;
    const double dura = (1 + std::floor(suerte(1) * 6)) * kHora;
    const double empieza = suerte(2) * (kTramoLluvia - dura);
    const double dentro = segundos - static_cast<double>(tramo) * kTramoLluvia - empieza;
    if (dentro < 0 || dentro >= dura) return 0;
    return 0.4 + 9 * suerte(3) * suerte(3) * std::sin(std::numbers::pi * (dentro + 1) / (dura + 2));
}

Tiempo Clima::en(SegundosCiviles momento) const {
    const auto s = static_cast<double>(momento.count());
    const double verano = estacion(s);
    Tiempo t;
    t.lluvia = lluviaEn(s);
    const double nubes = t.lluvia > 0 ? 0.9 : hastaUno(0.2 + 0.5 * onda(Canal::nubes, s, 9 * kHora));
    const double sol = std::max(0.0, alturaDelSol(s));
    t.radiacion = 1.05 * std::pow(sol, 1.15) * (1 - 0.75 * nubes);

    const double delDia = std::cos(kVuelta * (s - kHoraMasCalida) / kDia);
    t.temperatura = 16 + 8.5 * verano + (7.5 - 4 * nubes) * delDia + 3.5 * onda(Canal::dia, s, 3 * kDia) -
                    (t.lluvia > 0 ? 2 : 0);
    t.humedad = std::clamp(52 - 5 * verano - 22 * delDia + 14 * onda(Canal::dia, s + kAnio, 2 * kDia) +
                               25 * nubes + (t.lluvia > 0 ? 20 : 0),
                           8.0, 100.0);

    t.viento = std::max(
        0.0, 7 + 5 * onda(Canal::viento, s, 5 * kHora) + 4 * std::max(0.0, delDia) + (t.lluvia > 0 ? 9 : 0));
    const int punto =
        1 + static_cast<int>(15.99 * hastaUno(0.5 + 0.5 * onda(Canal::direccion, s, 7 * kHora)));
    // The vane rests on a compass point most of the time.
    const double giro = azar(Canal::giro, momento.count() / 600);
    t.direccion =
        static_cast<std::uint8_t>(giro < 0.75 ? 10 * punto : 10 * punto - 1 - static_cast<int>(giro * 8));

    t.presion = 92.2 - 0.5 * verano + 1.1 * onda(Canal::presion, s, 4 * kDia) - (t.lluvia > 0 ? 0.6 : 0);
    const double sequedad = (100 - t.humedad) / 100;
    t.evaporacion = std::max(0.0, 0.75 * t.radiacion * sequedad * (0.7 + t.viento / 30));
    return t;
}

std::array<std::uint8_t, registro_muestra::kBytes> registroDeMuestra(const Tiempo& tiempo,
                                                                     const FechaHora& momento) {
    namespace lugar = registro_muestra;
    std::array<std::uint8_t, lugar::kBytes> registro{};
    const auto reloj = relojBcd(momento);
    std::copy(reloj.begin(), reloj.end(), registro.begin() + lugar::kHora);
    ponerDosBytes(registro, lugar::kAuxiliar1, crudo(kBateria / 0.2));
    ponerDosBytes(registro, lugar::kHumedad, crudoHumedad(tiempo.humedad));
    ponerDosBytes(registro, lugar::kTemperatura, crudoTemperatura(tiempo.temperatura));
    registro[lugar::kDirViento] = tiempo.direccion;
    ponerDosBytes(registro, lugar::kVelViento, crudoViento(tiempo.viento));
    ponerDosBytes(registro, lugar::kRadSolar, crudo(tiempo.radiacion * 1000 / 2.66));
    ponerDosBytes(registro, lugar::kPresion, crudoPresion(tiempo.presion));
    registro[lugar::kLluvia] =
        static_cast<std::uint8_t>(std::lround(std::min(pasosDeLluvia(tiempo.lluvia), 250.0)));
    ponerDosBytes(registro, lugar::kAuxiliar2, crudo(kPanel / 0.01));
    ponerDosBytes(registro, lugar::kEvaporacion, crudoEvaporacion(tiempo.evaporacion));
    return registro;
}

std::array<std::uint8_t, kBytesMarco> marcoEnLinea(const Tiempo& tiempo) {
    // A format of its own, close to the stored record and not the same.
    namespace lugar = marco;
    std::array<std::uint8_t, kBytesMarco> bytes{};
    ponerDosBytes(bytes, lugar::kHumedad, crudoHumedad(tiempo.humedad));
    ponerDosBytes(bytes, lugar::kTemperatura, crudoTemperatura(tiempo.temperatura));
    bytes[lugar::kDirViento] = tiempo.direccion;
    ponerDosBytes(bytes, lugar::kVelViento, crudoViento(tiempo.viento));
    ponerDosBytes(bytes, lugar::kRadSolar, crudo(tiempo.radiacion / 0.66 / 0.004));
    ponerDosBytes(bytes, lugar::kPresion, crudoPresion(tiempo.presion));
    ponerDosBytes(bytes, lugar::kLluvia, crudo(pasosDeLluvia(tiempo.lluvia)));
    ponerDosBytes(bytes, lugar::kEvaporacion, crudoEvaporacion(tiempo.evaporacion));
    return bytes;
}

}  // namespace telvane
