#include "simulator/clima.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "simulator/memoria_simulada.h"

namespace telvane {
namespace {

using namespace std::chrono_literals;

unsigned par(std::span<const std::uint8_t> bytes, std::size_t lugar) {
    return bytes[lugar] * 256u + bytes[lugar + 1];
}

// The readings of a stored record, computed as its reader computes them.
struct Lectura {
    explicit Lectura(std::span<const std::uint8_t> r)
        : humedad((par(r, 8) * 0.004 - 0.82) * 32.25),
          temperatura((par(r, 10) * 0.004 - 1.5) * 25),
          direccion(r[12]),
          viento((par(r, 13) * 0.004 - 0.5) * 50),
          radiacion(par(r, 15) * 2.66 / 1000),
          presion((par(r, 17) + 98) * 0.899),
          lluvia(r[19] * 0.2),
          evaporacion(par(r, 23) * 0.01) {}
    double humedad, temperatura;
    int direccion;
    double viento, radiacion, presion, lluvia, evaporacion;
};

class Imagen : public testing::TestWithParam<std::uint32_t> {
   protected:
    const std::vector<std::uint8_t> bytes = memoriaSimulada(Clima(GetParam()));

    std::span<const std::uint8_t> registro(std::size_t i) const {
        return std::span(bytes).subspan(kInicioRegistros + i * registro_muestra::kBytes,
                                        registro_muestra::kBytes);
    }
    static constexpr std::size_t kRegistros = 8178;
};

TEST_P(Imagen, FillsTheMemoryWithARecordAnHour) {
    ASSERT_EQ(bytes.size(), kBytesMemoria);
    ASSERT_EQ(kInicioRegistros + kRegistros * registro_muestra::kBytes, kBytesMemoria);
    const auto primera = segundosCiviles({2018, 11, 20, 0ns});
    for (std::size_t i = 0; i < kRegistros; ++i) {
        const auto sello = registro(i).first<6>();
        for (const auto byte : sello) ASSERT_TRUE((byte >> 4) < 10 && (byte & 0x0F) < 10) << i;
        ASSERT_EQ(segundosCiviles(fechaHoraBcd(sello)) - primera, i * 3600s) << i;
    }
    const auto ultima = fechaHoraBcd(registro(kRegistros - 1).first<6>());
    EXPECT_EQ(ultima.anio, 2019);
    EXPECT_EQ(ultima.mes, 10);
}

TEST_P(Imagen, HasPlausibleReadings) {
    for (std::size_t i = 0; i < kRegistros; ++i) {
        const Lectura leido(registro(i));
        ASSERT_TRUE(leido.humedad > 5 && leido.humedad < 100.5) << i << ' ' << leido.humedad;
        ASSERT_TRUE(leido.temperatura > -15 && leido.temperatura < 45) << i << ' ' << leido.temperatura;
        ASSERT_TRUE(leido.direccion >= 1 && leido.direccion <= 160) << i << ' ' << leido.direccion;
        ASSERT_TRUE(leido.viento >= 0 && leido.viento < 60) << i << ' ' << leido.viento;
        ASSERT_TRUE(leido.radiacion >= 0 && leido.radiacion < 1.3) << i << ' ' << leido.radiacion;
        ASSERT_TRUE(leido.presion > 89 && leido.presion < 96) << i << ' ' << leido.presion;
        ASSERT_TRUE(leido.lluvia >= 0 && leido.lluvia < 20) << i << ' ' << leido.lluvia;
        ASSERT_TRUE(leido.evaporacion >= 0 && leido.evaporacion < 2) << i << ' ' << leido.evaporacion;
    }
}

TEST_P(Imagen, HasSeasonsDayAndNightAndRain) {
    double enero = 0, julio = 0, mediodia = 0, medianoche = 0, lluvia = 0, evaporacion = 0;
    int rumbos = 0;
    for (std::size_t i = 0; i < kRegistros; ++i) {
        const Lectura leido(registro(i));
        const auto hora = fechaHoraBcd(registro(i).first<6>());
        if (hora.mes == 1) enero += leido.temperatura / (31 * 24);
        if (hora.mes == 7) julio += leido.temperatura / (31 * 24);
        if (hora.deDia == 13h) mediodia += leido.radiacion;
        if (hora.deDia == 1h) medianoche += leido.radiacion;
        rumbos += leido.direccion % 10 == 0;
        lluvia += leido.lluvia;
        evaporacion += leido.evaporacion;
    }
    EXPECT_GT(enero, julio + 10);
    EXPECT_EQ(medianoche, 0);
    EXPECT_GT(mediodia, 100);
    EXPECT_GT(lluvia, 50);
    EXPECT_LT(lluvia, 1200);
    EXPECT_GT(evaporacion, 300);
    EXPECT_GT(rumbos, static_cast<int>(kRegistros / 2));
    EXPECT_LT(rumbos, static_cast<int>(kRegistros));
}

TEST_P(Imagen, TheHeaderIsTheRecordAndThenNothing) {
    for (auto i = registro_config::kFin; i < kInicioRegistros; ++i) ASSERT_EQ(bytes[i], 0xFF) << i;
    EXPECT_EQ(bytes[registro_config::kIntervalo], 0x60);
    EXPECT_EQ(bytes[registro_config::kSerie], 0x02);
    EXPECT_EQ(bytes[registro_config::kUsuario], 'I');
}

INSTANTIATE_TEST_SUITE_P(DeVariasSemillas, Imagen, testing::Values(1u, 2u, 77u, 4'000'000'000u));

TEST(Clima, TheSameNumberGivesTheSameMemoryAndAnotherAnother) {
    EXPECT_EQ(memoriaSimulada(Clima(5)), memoriaSimulada(Clima(5)));
    EXPECT_NE(memoriaSimulada(Clima(5)), memoriaSimulada(Clima(6)));
}

TEST(Clima, TheLiveFrameSaysTheSameAsTheWeather) {
    const Clima clima(3);
    for (int hora = 0; hora < 24 * 30; ++hora) {
        const auto tiempo = clima.en(segundosCiviles({2026, 1, 1, 0ns}) + std::chrono::hours(hora));
        const auto m = marcoEnLinea(tiempo);
        ASSERT_NEAR((par(m, 3) * 0.004 - 0.82) * 32.25, tiempo.humedad, 0.1);
        ASSERT_NEAR(par(m, 5) * 0.004 * 25.0 - 37.5, tiempo.temperatura, 0.06);
        ASSERT_EQ(m[7], tiempo.direccion);
        ASSERT_NEAR(par(m, 8) * 0.004 * 50.0 - 25.0, tiempo.viento, 0.11);
        ASSERT_NEAR(par(m, 10) * 0.004 * 0.66, tiempo.radiacion, 0.002);
        ASSERT_LE(m[12], 3);
        ASSERT_NEAR((par(m, 12) + 98) * 0.899, tiempo.presion, 0.46);
        ASSERT_NEAR(par(m, 14) * 0.2, tiempo.lluvia, 0.11);
        ASSERT_NEAR(par(m, 16) / 100.0, tiempo.evaporacion, 0.006);
    }
}

RC_GTEST_PROP(RelojBcd, EveryDateOfTheCenturyComesBackTheSame, ()) {
    const auto desde = segundosCiviles({2000, 1, 1, 0ns});
    const auto hasta = segundosCiviles({2100, 1, 1, 0ns});
    const auto momento =
        desde + std::chrono::seconds(*rc::gen::inRange<std::int64_t>(0, (hasta - desde).count()));
    const auto vuelta = fechaHoraBcd(relojBcd(fechaHoraDe(momento)));
    RC_ASSERT(segundosCiviles(vuelta) == momento);
}

TEST(RelojBcd, WhatIsNoDateGoesOnAsTheCalendar) {
    const std::array<std::uint8_t, 6> bytes = {0x24, 0x60, 0x00, 0x32, 0x12, 0x18};
    const auto fecha = fechaHoraBcd(bytes);
    EXPECT_EQ(fecha.anio, 2019);
    EXPECT_EQ(fecha.mes, 1);
    EXPECT_EQ(fecha.dia, 2);
    EXPECT_EQ(fecha.deDia, 1h);
}

}  // namespace
}  // namespace telvane
