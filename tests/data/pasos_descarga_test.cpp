// The memory download, event by event.
#include "data/pasos_descarga.h"

#include <gtest/gtest.h>

namespace telvane {
namespace {

constexpr std::int32_t kUltimo = 4098;

TEST(PasoDescarga, TheFirstReplyIsRightWithOneByteOnly) {
    for (unsigned byte = 0; byte < 256; ++byte) {
        const auto paso = pasoDescarga(1, kUltimo, static_cast<std::uint8_t>(byte));
        EXPECT_EQ(paso.hito, byte == 0x55 ? HitoDescarga::saludo : HitoDescarga::error) << byte;
        EXPECT_EQ(paso.respuesta, byte == 0x55 ? std::optional<std::uint8_t>(0xAA) : std::nullopt) << byte;
    }
}

TEST(PasoDescarga, TheSecondReplyIsRightWithOneByteOnly) {
    for (unsigned byte = 0; byte < 256; ++byte) {
        const auto paso = pasoDescarga(2, kUltimo, static_cast<std::uint8_t>(byte));
        EXPECT_EQ(paso.hito, byte == 0xAA ? HitoDescarga::comienzo : HitoDescarga::error) << byte;
        EXPECT_EQ(paso.respuesta, byte == 0xAA ? std::optional<std::uint8_t>(0x55) : std::nullopt) << byte;
    }
}

TEST(PasoDescarga, ThenBlocksComeThatAreNotAnsweredAtTheirBeginning) {
    for (std::int32_t contador = 3; contador <= kUltimo; ++contador) {
        const auto paso = pasoDescarga(contador, kUltimo, static_cast<std::uint8_t>(contador));
        ASSERT_EQ(paso.hito, HitoDescarga::bloque) << contador;
        ASSERT_FALSE(paso.respuesta) << contador;
    }
}

TEST(PasoDescarga, AnEventOutsideTheExpectedCountIsAnError) {
    for (const std::int32_t contador : {-1, 0, kUltimo + 1, 1 << 30}) {
        for (const std::uint8_t byte : {std::uint8_t{0x55}, std::uint8_t{0xAA}}) {
            EXPECT_EQ(pasoDescarga(contador, kUltimo, byte).hito, HitoDescarga::error) << contador;
            EXPECT_FALSE(pasoDescarga(contador, kUltimo, byte).respuesta) << contador;
        }
    }
    EXPECT_EQ(pasoDescarga(1, 0, 0x55).hito, HitoDescarga::error);
}

TEST(PasoDescarga, ABlockIsAcknowledgedWhenNothingIsLeftOverBehindIt) {
    EXPECT_EQ(finDeBloque(0).hito, HitoDescarga::bloque);
    EXPECT_EQ(finDeBloque(0).respuesta, 0x55);
    for (const std::size_t sobran : {1, 63, 64, 65536}) {
        EXPECT_EQ(finDeBloque(sobran).hito, HitoDescarga::error) << sobran;
        EXPECT_FALSE(finDeBloque(sobran).respuesta) << sobran;
    }
}

}  // namespace
}  // namespace telvane
