// What is typed into the form, as values.
#include "loggerconfig/edicion.h"

#include <chrono>

#include <gtest/gtest.h>

namespace telvane {
namespace {

using namespace std::chrono_literals;

TEST(LeerHora, TakesTimesOfTheDayOnly) {
    EXPECT_EQ(leerHora("00:00:00"), 0s);
    EXPECT_EQ(leerHora("23:59:59"), 86399s);
    EXPECT_EQ(leerHora("1:2:3"), 3723s);
    for (const auto* mala :
         {"", "24:00:00", "12:60:00", "12:00:60", "12:00", "12:00:00:00", " 1:00:00", "__:__:__",
          "::", "-1:00:00", "-0:00:00", "1:-0:00", "1:00:-0", "1a:00:00", "120:00:00"}) {
        EXPECT_FALSE(leerHora(mala)) << mala;
    }
}

}  // namespace
}  // namespace telvane
