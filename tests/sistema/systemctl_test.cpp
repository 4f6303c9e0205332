#include "sistema/systemctl.h"

#include <stdlib.h>
#include <sys/stat.h>

#include <fstream>

#include <gtest/gtest.h>

#include "tests/apoyo/carpeta_temporal.h"

namespace telvane {
namespace {

// A systemctl of the test's own, found before any other.
class Systemctl : public testing::Test {
   protected:
    Systemctl() { ::setenv("PATH", (carpeta.ruta().string() + ":" + antes).c_str(), 1); }
    ~Systemctl() override { ::setenv("PATH", antes.c_str(), 1); }
    void programa(const std::string& texto) {
        const auto ruta = carpeta.ruta() / "systemctl";
        std::ofstream(ruta) << "#!/bin/sh\n" << texto;
        ASSERT_EQ(::chmod(ruta.c_str(), 0755), 0);
    }
    auto preguntar() { return preguntarASystemctl({"show", "a b"}, carpeta.ruta()); }

    CarpetaTemporal carpeta;
    std::string antes = ::getenv("PATH");
};

TEST_F(Systemctl, WhatItSaysIsGivenAndItsComplaintsAreNot) {
    programa("echo \"$#:$2\"; echo queja >&2\n");
    EXPECT_EQ(preguntar(), "2:a b\n");
}

TEST_F(Systemctl, ItsMomentsAreUtcWhereverThisIs) {
    ::setenv("TZ", "America/Argentina/Cordoba", 1);
    programa("echo \"$TZ\"\n");
    EXPECT_EQ(preguntar(), "UTC\n");
    ::unsetenv("TZ");
}

TEST_F(Systemctl, OfALongAnswerNothingIsLost) {
    programa("i=0; while [ $i -lt 20000 ]; do echo 0123456789; i=$((i + 1)); done\n");
    EXPECT_EQ(preguntar()->size(), 220'000U);
}

TEST_F(Systemctl, AFailureIsNoAnswer) {
    programa("echo algo; exit 1\n");
    EXPECT_EQ(preguntar(), std::nullopt);
}

TEST_F(Systemctl, WhereSystemdDoesNotRunNobodyIsAsked) {
    programa("echo algo\n");
    EXPECT_EQ(preguntarASystemctl({"show"}, carpeta.ruta() / "no"), std::nullopt);
}

}  // namespace
}  // namespace telvane
