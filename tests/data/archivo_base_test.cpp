// The name that a base file gets.
#include "data/archivo_base.h"

#include <chrono>

#include <gtest/gtest.h>

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

}  // namespace
}  // namespace telvane
