// The name that a base file gets, and what is kept from going into one.
#include "data/archivo_base.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "loggerconfig/datos_config.h"
#include "simulator/memoria_simulada.h"
#include "tests/apoyo/azar.h"

namespace telvane {
namespace {

using namespace std::chrono_literals;

TEST(NombreArchivoBase, HasNoPathPartsWhateverTheSerialNumberHolds) {
    const FechaHora momento{2026, 1, 2, 3h + 4min + 5s};
    EXPECT_EQ(nombreArchivoBase("02080050", momento), "02080050_20260102_030405.rgt");
    EXPECT_EQ(nombreArchivoBase("9:;<=>?/", momento), "9________20260102_030405.rgt");
    EXPECT_EQ(nombreArchivoBase("????????", momento), "sin_serie_20260102_030405.rgt") << "erased";
    EXPECT_EQ(nombreArchivoBase("", momento), "sin_serie_20260102_030405.rgt");
}

// What a stream leads to: whether it is refused.
bool seRehusa(std::span<const std::uint8_t> bytes) {
    const auto regla = reglaDeFlujos();
    return !regla.porque(bytes.first(std::min(bytes.size(), regla.vista))).empty();
}

std::vector<std::uint8_t> bytesDe(std::string_view texto) {
    return {texto.begin(), texto.end()};
}

std::vector<std::uint8_t> arbitrarios(Azar& azar, std::size_t cuantos) {
    std::vector<std::uint8_t> bytes(cuantos);
    std::ranges::generate(bytes, [&] { return static_cast<std::uint8_t>(tirar(azar, 256)); });
    return bytes;
}

// Of whatever logger, to whatever block it came, with whatever else in it the line has spoilt than both its
// number and its interval.
TEST(ReglaDeFlujos, NothingGoesIntoAMemory) {
    Azar azar(12);
    for (int vez = 0; vez < 200; ++vez) {
        auto imagen = memoriaSimulada(Clima(static_cast<std::uint32_t>(vez)));
        for (std::size_t i = 0; i < kBytesSerie; ++i) {
            const auto cifras = tirar(azar, 100);
            imagen[i] = static_cast<std::uint8_t>(cifras / 10 * 16 + cifras % 10);
        }
        if (vez % 5 == 0) std::fill_n(imagen.begin(), kBytesSerie, std::uint8_t{0});
        if (vez % 11 == 0)
            imagen[registro_config::kUsuario + 5] = '\r', imagen[registro_config::kUsuario + 6] = '\n';
        if (vez % 7 == 0) imagen[registro_config::kUsuario + tirar(azar, 100U)] = '\n';
        for (auto faltan = tirar(azar, 500); faltan > 0; --faltan) {
            const auto donde = tirar(azar, imagen.size());
            if (donde >= kBytesSerie) imagen[donde] = static_cast<std::uint8_t>(tirar(azar, 256));
        }
        // Without its clock a header of letters, in a part that ends with it, is a text as any other.
        const auto bloques = 2 + tirar(azar, kBloquesMemoria - 1);
        imagen[registro_config::kReloj + 1] = 0x12;
        EXPECT_TRUE(seRehusa(std::span(imagen).first(bloques * kBytesBloque))) << vez << " " << bloques;
        EXPECT_TRUE(seRehusa(imagen)) << vez;
    }
}

// Whoever empties a log under a writer that goes on where it was leaves zeros in the place of what was there.
TEST(ReglaDeFlujos, ALogIsNoMemoryWhateverWasTakenOffItsBeginning) {
    Azar azar(13);
    for (int vez = 0; vez < 500; ++vez) {
        std::vector<std::uint8_t> diario(vez % 3 == 0 ? 64 * tirar(azar, 4000U) : tirar(azar, 300'000U), 0);
        for (auto lineas = 1 + tirar(azar, 20); lineas > 0; --lineas) {
            const auto linea = bytesDe(
                fmt::format("2026-11-23 estación {}: {} bloques\n", tirar(azar, 100), tirar(azar, 5000)));
            diario.insert(diario.end(), linea.begin(), linea.end());
            if (tirar(azar, 3) != 0) continue;
            const auto basura = arbitrarios(azar, tirar(azar, 100U));
            diario.insert(diario.end(), basura.begin(), basura.end());
        }
        EXPECT_FALSE(seRehusa(diario)) << vez;
    }
}

TEST(ReglaDeFlujos, WhatIsLongerThanAMemoryIsNone) {
    Azar azar(14);
    for (int vez = 0; vez < 50; ++vez)
        EXPECT_FALSE(seRehusa(arbitrarios(azar, kBytesMemoria + 1 + tirar(azar, 100'000U)))) << vez;
}

TEST(ReglaDeFlujos, ZerosAloneAreNoMemory) {
    const std::vector<std::uint8_t> ceros(kBytesMemoria, 0);
    for (std::size_t largo = 0; largo <= ceros.size(); largo += kBytesBloque)
        EXPECT_FALSE(seRehusa(std::span(ceros).first(largo))) << largo;
    EXPECT_EQ(reglaDeTabla().porque(ceros), "");
}

}  // namespace
}  // namespace telvane
