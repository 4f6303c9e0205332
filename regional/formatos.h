// Dates and times as text: day/month/year, 24 hours, Spanish names, whatever the session's locale.
#pragma once

#include <chrono>
#include <string>
#include <string_view>

#include "platform/reloj.h"

namespace telvane {

// "20/11/2026"
std::string fechaCorta(int anio, int mes, int dia);
std::string fechaCorta(const FechaHora& momento);
// "17:04:09"; whole seconds of the day, taken modulo 24 hours.
std::string horaLarga(std::chrono::seconds deDia);
std::string horaLarga(const FechaHora& momento);
// "viernes, 20 de noviembre de 2026"
std::string fechaLarga(const FechaHora& momento);
// "noviembre": mes 1 to 12.
std::string_view nombreDeMes(int mes);

// Civil date; any year of the proleptic Gregorian calendar.
struct Fecha {
    int anio = 1980;
    int mes = 1;
    int dia = 1;
    bool operator==(const Fecha&) const = default;
};
// Calendar arithmetic: a month or day beyond its range carries on ("2013-19-39" is a date of 2014).
Fecha fechaConAcarreo(int anio, int mes, int dia);

}  // namespace telvane
