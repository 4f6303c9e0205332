#include "regional/fecha_texto.h"

#include <gtest/gtest.h>

namespace telvane {
namespace {

TEST(LeerFechaCorta, TakesDatesThatExist) {
    EXPECT_EQ(leerFechaCorta("31/12/2024"), (Fecha{2024, 12, 31}));
    EXPECT_EQ(leerFechaCorta("29/02/2024"), (Fecha{2024, 2, 29}));
    EXPECT_EQ(leerFechaCorta("1/2/2003"), (Fecha{2003, 2, 1}));
    EXPECT_EQ(leerFechaCorta("15/01/2009"), (Fecha{2009, 1, 15}));
}

TEST(LeerFechaCorta, RefusesEverythingElse) {
    for (const auto* mala : {"",
                             "//",
                             "29/02/2023",
                             "31/04/2024",
                             "0/1/2024",
                             "1/0/2024",
                             "1/13/2024",
                             "1/1/24",
                             "1/1/20240",
                             "-1/1/2024",
                             "1/1/2024x",
                             "1/1",
                             "__/__/____",
                             " 1/1/2024",
                             "a/b/cdef",
                             "1:/1/2024",
                             "1/-1/2024",
                             "1/1/-024",
                             "1//2024",
                             "/1/2024",
                             "1/x/2024",
                             "x/1/2024",
                             "1/1/202x",
                             ":/1/2024",
                             "1/1/202/",
                             "00020/1/2024",
                             "2147483647/1/2024",
                             "1/2147483647/2024",
                             "99999999999/1/2024"}) {
        EXPECT_FALSE(leerFechaCorta(mala)) << mala;
    }
}

}  // namespace
}  // namespace telvane
