#include "platform/reloj.h"

#include <time.h>

#include <charconv>
#include <ctime>

#include <fmt/format.h>

namespace telvane {

float Reloj::segundosDelDia() const {
    return std::chrono::duration<float>(ahora().deDia).count();
}

std::string segundosComoTexto(float segundos) {
    return fmt::format("{:.7g}", segundos);
}

double textoComoSegundos(const std::string& texto) {
    double valor = 0;
    std::from_chars(texto.data(), texto.data() + texto.size(), valor);
    return valor;
}

FechaHora RelojSistema::ahora() const {
    timespec t{};
    clock_gettime(CLOCK_REALTIME, &t);
    std::tm civil{};
    localtime_r(&t.tv_sec, &civil);
    using namespace std::chrono;
    return {
        civil.tm_year + 1900, civil.tm_mon + 1, civil.tm_mday,
        hours(civil.tm_hour) + minutes(civil.tm_min) + seconds(civil.tm_sec % 60) + nanoseconds(t.tv_nsec)};
}

std::chrono::nanoseconds RelojSistema::monotono() const {
    timespec t{};
    clock_gettime(CLOCK_MONOTONIC, &t);
    return std::chrono::seconds(t.tv_sec) + std::chrono::nanoseconds(t.tv_nsec);
}

}  // namespace telvane
