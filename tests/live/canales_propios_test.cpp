// When an impossible value is the sensor's own.
#include "live/canales_propios.h"

#include <array>
#include <initializer_list>

#include <gtest/gtest.h>

namespace telvane {
namespace {

using Marco = std::array<std::uint8_t, kBytesMarco>;
using enum CanalesPropios::Juicio;

Marco conImposibles(std::initializer_list<std::size_t> lugares) {
    Marco bytes{};
    for (const auto lugar : lugares) bytes.at(lugar) = 0xFF;
    return bytes;
}

const Marco kBueno{};
const Marco kHumedadMala = conImposibles({marco::kHumedad});
const Marco kDireccionMala = conImposibles({marco::kDirViento});
const Marco kDosMalos = conImposibles({marco::kHumedad, marco::kDirViento});

TEST(CanalesPropios, TheThirdInARowIsBelievedAndThenTheChannelIsTheLoggersOwn) {
    CanalesPropios canales;
    EXPECT_EQ(canales.juzgar(kBueno), bueno);
    EXPECT_EQ(canales.juzgar(kHumedadMala), dudoso);
    EXPECT_EQ(canales.juzgar(kHumedadMala), dudoso);
    EXPECT_EQ(canales.juzgar(kHumedadMala), insiste);
    for (int i = 0; i < 5; ++i) EXPECT_EQ(canales.juzgar(kHumedadMala), bueno);
    EXPECT_EQ(canales.juzgar(kDosMalos), dudoso) << "the other channel is not";
    EXPECT_EQ(canales.juzgar(kBueno), bueno);
    EXPECT_EQ(canales.juzgar(kHumedadMala), bueno) << "it stays its own";
}

TEST(CanalesPropios, AGoodFrameOrASpoiltOneBeginsTheCountAnew) {
    CanalesPropios canales;
    for (int vez = 0; vez < 3; ++vez) {
        EXPECT_EQ(canales.juzgar(kHumedadMala), dudoso);
        EXPECT_EQ(canales.juzgar(kHumedadMala), dudoso);
        EXPECT_EQ(canales.juzgar(kBueno), bueno);
        EXPECT_EQ(canales.juzgar(kHumedadMala), dudoso);
        EXPECT_EQ(canales.juzgar(kHumedadMala), dudoso);
        canales.interrumpir();
    }
}

TEST(CanalesPropios, OneChannelMustSayItInAllOfThem) {
    CanalesPropios canales;
    EXPECT_EQ(canales.juzgar(kHumedadMala), dudoso);
    EXPECT_EQ(canales.juzgar(kHumedadMala), dudoso);
    EXPECT_EQ(canales.juzgar(kDireccionMala), dudoso) << "the first of this channel";
    EXPECT_EQ(canales.juzgar(kDireccionMala), dudoso);
    EXPECT_EQ(canales.juzgar(kHumedadMala), dudoso);
    EXPECT_EQ(canales.juzgar(kDosMalos), dudoso);
    EXPECT_EQ(canales.juzgar(kDireccionMala), dudoso) << "no channel in all three";
    EXPECT_EQ(canales.juzgar(kDosMalos), dudoso);
    EXPECT_EQ(canales.juzgar(kDosMalos), insiste) << "the direction";
    EXPECT_EQ(canales.juzgar(kDosMalos), bueno) << "both: they were there when it was believed";
}

// A frame shifted by a late byte says the same impossible thing again and again.
TEST(CanalesPropios, AFrameThatMayBeShiftedDoesNotCount) {
    CanalesPropios canales;
    for (int vez = 0; vez < 5; ++vez) EXPECT_EQ(canales.juzgar(kHumedadMala, false), dudoso);
    EXPECT_EQ(canales.juzgar(kHumedadMala), dudoso);
    EXPECT_EQ(canales.juzgar(kHumedadMala), dudoso);
    EXPECT_EQ(canales.juzgar(kHumedadMala, false), dudoso);
    EXPECT_EQ(canales.juzgar(kHumedadMala), dudoso);
    EXPECT_EQ(canales.juzgar(kHumedadMala), dudoso);
    EXPECT_EQ(canales.juzgar(kHumedadMala), insiste);
    EXPECT_EQ(canales.juzgar(kHumedadMala, false), bueno);
}

}  // namespace
}  // namespace telvane
