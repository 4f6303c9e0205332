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
TEST(SinContrasenas, AllWhoShowAnAddressHideTheSameOfIt) {
    for (const auto& [con, sin] : std::vector<std::pair<std::string, std::string>>{
             {"postgresql://h/x?passw%6frd=secreta", "postgresql://h/x?passw%6frd=*******"},
             {"postgresql://h/x?user=b&%70ass%77or%64=secreta&a=b",
              "postgresql://h/x?user=b&%70ass%77or%64=*******&a=b"},
             {"postgresql://h/x?password=uno&password=dos", "postgresql://h/x?password=***&password=***"},
             {"postgresql://h/x?passw%6Frd=a?b", "postgresql://h/x?passw%6Frd=***"},
             {"postgresql://h/x?a%=b&%zzpassw%6rd=b", "postgresql://h/x?a%=b&%zzpassw%6rd=b"},
             {"postgresql://yo:se?creta@h/x", "postgresql://yo:********@h/x"},
             {"postgresql://yo:se:cr@s/x", "postgresql://yo:*****@s/x"},
             {"postgresql://yo:a@b/c@h/x", "postgresql://yo:*****@h/x"},
             {"postgresql://yo:se/cr?eta@h/x", "postgresql://yo:*********@h/x"},
             {"postgresql://yo:password=x@h/x", "postgresql://yo:**********@h/x"},
             {"postgresql://yo:abc@s:5432/x?password=a&user=b:c@d",
              "postgresql://yo:***@s:5432/x?password=*&user=b:c@d"},
             {"postgresql://s:5432/x?user=yo@dominio", "postgresql://s:5432/x?user=yo@dominio"}}) {
        auto tapado = con;
        ocultarContrasena(tapado);
        EXPECT_EQ(tapado, sin);
        auto marcado = sin;
        for (auto i = marcado.find('*'); i != std::string::npos; i = marcado.find('*'))
            marcado.replace(i, marcado.find_first_not_of('*', i) - i, "…");
        EXPECT_EQ(sinContrasena(con), marcado);
        EXPECT_EQ(sinContrasenas("no: \"" + con + "\""), "no: \"" + marcado + "\"");
    }
}

TEST(SinContrasenas, AValueIsOneAddressToItsEnd) {
    EXPECT_EQ(sinContrasena("postgresql://yo:a b\"c@h/x"), "postgresql://yo:…@h/x");
    EXPECT_EQ(sinContrasena("postgresql://h/x?password=a b"), "postgresql://h/x?password=…");
    std::string argumento = "--en=postgres://yo:a b@s:5432/x";
    ocultarContrasena(argumento);
    EXPECT_EQ(argumento, "--en=postgres://yo:***@s:5432/x");
}

TEST(SinContrasenas, AFilesNameStaysAsItIs) {
    for (const std::string nombre : {"carpeta/a:b@c", "/datos/password=x.sqlite", ""}) {
        auto argumento = nombre;
        ocultarContrasena(argumento);
        EXPECT_EQ(argumento, nombre);
        EXPECT_EQ(sinContrasena(nombre), nombre);
    }
}

TEST(SinContrasenas, WhatHoldsNoneStaysAsItIs) {
    for (const auto* texto : {"", "://", "tcp://m:4001", "postgresql://USUARIO@SERVIDOR/BASE",
                              "postgresql://yo@h:5432/x", "tcp://[fd00::20]:4001 yo@h", "password="})
        EXPECT_EQ(sinContrasenas(texto), texto);
}

}  // namespace
}  // namespace telvane
