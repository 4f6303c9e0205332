#include "platform/contrasena.h"

#include <gtest/gtest.h>

namespace telvane {
namespace {

TEST(SinContrasenas, TheAddressStaysAndItsPasswordGoes) {
    EXPECT_EQ(sinContrasenas("no: tcp://yo:secreta@m:4001: se espera"), "no: tcp://yo:…@m:4001: se espera");
    EXPECT_EQ(sinContrasenas("\"postgresql://yo:a@b/c@h/x\" y postgres://:z@h"),
              "\"postgresql://yo:…@h/x\" y postgres://:…@h");
    EXPECT_EQ(sinContrasenas("postgresql://yo@h/x?password=secreta&user=b"),
              "postgresql://yo@h/x?password=…&user=b");
    EXPECT_EQ(sinContrasenas("host=h password=secreta dbname=x"), "host=h password=… dbname=x");
}

TEST(SinContrasenas, WhatHoldsNoneStaysAsItIs) {
    for (const auto* texto : {"", "://", "tcp://m:4001", "postgresql://USUARIO@SERVIDOR/BASE",
                              "postgresql://yo@h:5432/x", "tcp://[fd00::20]:4001 yo@h", "password="})
        EXPECT_EQ(sinContrasenas(texto), texto);
}

}  // namespace
}  // namespace telvane
