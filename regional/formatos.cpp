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

// A month or day beyond its range carries on.
std::chrono::sys_days diaDe(int anio, int mes, int dia) {
    using namespace std::chrono;
    return sys_days((year(anio) / January + months(mes - 1)) / 1) + days(dia - 1);
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
    const std::chrono::weekday dia(diaDe(momento.anio, momento.mes, momento.dia));
    return fmt::format("{}, {} de {} de {}", kDias[dia.c_encoding()], momento.dia, nombreDeMes(momento.mes),
                       momento.anio);
}

std::string_view nombreDeMes(int mes) {
    return kMeses[static_cast<std::size_t>(mes - 1)];
}

Fecha fechaConAcarreo(int anio, int mes, int dia) {
    const std::chrono::year_month_day fecha(diaDe(anio, mes, dia));
    return {static_cast<int>(fecha.year()), static_cast<int>(static_cast<unsigned>(fecha.month())),
            static_cast<int>(static_cast<unsigned>(fecha.day()))};
}

}  // namespace telvane
