#include "platform/contrasena.h"

#include <string>
#include <utility>
#include <vector>

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

// The data base's library reads "%6f" in a parameter's name as the letter that it stands for, and in a
// password a question mark as itself.
TEST(SinContrasenas, AKeyIsReadAsTheLibraryOfTheDataBaseReadsIt) {
    for (const auto& [con, sin] : std::vector<std::pair<std::string, std::string>>{
             {"postgresql://h/x?passw%6frd=secreta", "postgresql://h/x?passw%6frd=*******"},
             {"postgresql://h/x?user=b&%70ass%77or%64=secreta&a=b",
              "postgresql://h/x?user=b&%70ass%77or%64=*******&a=b"},
             {"postgresql://h/x?password=uno&password=dos", "postgresql://h/x?password=***&password=***"},
             {"postgresql://h/x?passw%6Frd=a?b", "postgresql://h/x?passw%6Frd=***"},
             {"postgresql://yo:se?creta@h/x", "postgresql://yo:********@h/x"},
             {"postgresql://h/x?a%=b&%zzpassw%6rd=b", "postgresql://h/x?a%=b&%zzpassw%6rd=b"}}) {
        auto tapado = con;
        ocultarContrasena(tapado);
        EXPECT_EQ(tapado, sin);
    }
    EXPECT_EQ(sinContrasenas("no: \"postgresql://h/x?passw%6frd=secreta&a=b\""),
              "no: \"postgresql://h/x?passw%6frd=…&a=b\"");
}

TEST(SinContrasenas, WhatHoldsNoneStaysAsItIs) {
    for (const auto* texto : {"", "://", "tcp://m:4001", "postgresql://USUARIO@SERVIDOR/BASE",
                              "postgresql://yo@h:5432/x", "tcp://[fd00::20]:4001 yo@h", "password="})
        EXPECT_EQ(sinContrasenas(texto), texto);
}

}  // namespace
}  // namespace telvane
