#include "regional/formatos.h"

#include <array>
#include <string_view>

#include <fmt/format.h>

namespace telvane {

namespace {

constexpr std::array<std::string_view, 7> kDias = {"domingo", "lunes",   "martes", "miércoles",
                                                   "jueves",  "viernes", "sábado"};
constexpr std::array<std::string_view, 12> kMeses = {"enero",      "febrero", "marzo",     "abril",
                                                     "mayo",       "junio",   "julio",     "agosto",
                                                     "septiembre", "octubre", "noviembre", "diciembre"};

// The quotient that goes with a remainder of 0 or more.
constexpr int dividir(int a, int b) {
    return a / b - (a % b < 0 ? 1 : 0);
}

// The calendar repeats every 400 years, and a year that begins in March has its odd day at its end.
constexpr int kDiasEra = 146097;
constexpr int kDiasHasta1970 = 719468;  // from 0000-03-01

// Days since 1970-01-01; mes 1 to 12, any day.
constexpr int diasDesde1970(int anio, int mes, int dia) {
    const int a = mes <= 2 ? anio - 1 : anio;
    const int era = dividir(a, 400);
    const int deEra = a - era * 400;
    const int deAnio = (153 * (mes > 2 ? mes - 3 : mes + 9) + 2) / 5 + dia - 1;
    return era * kDiasEra + deEra * 365 + deEra / 4 - deEra / 100 + deAnio - kDiasHasta1970;
}

constexpr Fecha fechaDeDias(int dias) {
    const int desdeMarzo = dias + kDiasHasta1970;
    const int era = dividir(desdeMarzo, kDiasEra);
    const int d = desdeMarzo - era * kDiasEra;
    const int anio = (d - d / 1460 + d / 36524 - d / (kDiasEra - 1)) / 365;
    const int deAnio = d - (365 * anio + anio / 4 - anio / 100);
    const int mes = (5 * deAnio + 2) / 153;
    const int dia = deAnio - (153 * mes + 2) / 5 + 1;
    const int civil = mes < 10 ? mes + 3 : mes - 9;
    return {anio + era * 400 + (civil <= 2 ? 1 : 0), civil, dia};
}

std::chrono::seconds segundosEnteros(const FechaHora& momento) {
    return std::chrono::floor<std::chrono::seconds>(momento.deDia);
}

}  // namespace

std::string fechaCorta(int anio, int mes, int dia) {
    return fmt::format("{:02}/{:02}/{:04}", dia, mes, anio);
}

std::string fechaCorta(const FechaHora& momento) {
    return fechaCorta(momento.anio, momento.mes, momento.dia);
}

std::string horaLarga(std::chrono::seconds deDia) {
    constexpr int kDia = 86400;
    const auto resto = static_cast<int>(deDia.count() % kDia);
    const int s = resto < 0 ? resto + kDia : resto;
    return fmt::format("{:02}:{:02}:{:02}", s / 3600, s / 60 % 60, s % 60);
}

std::string horaLarga(const FechaHora& momento) {
    return horaLarga(segundosEnteros(momento));
}

std::string fechaLarga(const FechaHora& momento) {
    const int dias = diasDesde1970(momento.anio, momento.mes, momento.dia);
    const int semana = dias + 4 - dividir(dias + 4, 7) * 7;  // 1970 began on a Thursday
    return fmt::format("{}, {} de {} de {}", kDias[static_cast<std::size_t>(semana)], momento.dia,
                       kMeses[static_cast<std::size_t>(momento.mes - 1)], momento.anio);
}

Fecha fechaConAcarreo(int anio, int mes, int dia) {
    const int anios = dividir(mes - 1, 12);
    return fechaDeDias(diasDesde1970(anio + anios, mes - anios * 12, dia));
}

}  // namespace telvane
