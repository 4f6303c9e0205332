#include "serie_temporal/instante.h"

#include <gtest/gtest.h>

namespace telvane {
namespace {

using namespace std::chrono_literals;

TEST(Instante, IsTheStampsLocalTime) {
    BytesMuestra registro{0x17, 0x04, 0x09, 0x20, 0x11, 0x18};
    const auto momento = instanteDe(registro);
    EXPECT_EQ(fechaDe(momento), (Fecha{.anio = 2018, .mes = 11, .dia = 20}));
    EXPECT_EQ(horaDe(momento), (Hora{.hora = 17, .minuto = 4, .segundo = 9}));
    EXPECT_EQ(momento.time_since_epoch(), 1'542'733'449s);
}

TEST(Instante, GoesOnOverTheEndsOfDaysMonthsYearsAndTheCentury) {
    EXPECT_EQ(instante({.anio = 2019, .mes = 1, .dia = 1}) - instante({.anio = 2018, .mes = 12, .dia = 31}),
              24h);
    EXPECT_EQ(instante({.anio = 2024, .mes = 3, .dia = 1}) - instante({.anio = 2024, .mes = 2, .dia = 28}),
              48h);
    EXPECT_EQ(
        fechaDe(instante({.anio = 2099, .mes = 12, .dia = 31}, {.hora = 23, .minuto = 59, .segundo = 59}) +
                1s),
        (Fecha{.anio = 2100, .mes = 1, .dia = 1}));
}

}  // namespace
}  // namespace telvane
