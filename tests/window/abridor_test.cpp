// What the desktop's opener says, and when it is not there.
#include "app/qt/abridor.h"

#include <sys/stat.h>

#include <cstdlib>
#include <fstream>
#include <string>
#include <utility>

#include <QTest>
#include <gtest/gtest.h>

#include "app/qt/bucle_qt.h"
#include "tests/apoyo/bucle_prueba.h"
#include "tests/apoyo/carpeta_temporal.h"

namespace telvane {
namespace {

using namespace std::chrono_literals;

class AbridorDelEscritorio : public ::testing::Test {
   protected:
    AbridorDelEscritorio() : caminos_(::getenv("PATH")) { ::setenv("PATH", carpeta.ruta().c_str(), 1); }
    ~AbridorDelEscritorio() override { ::setenv("PATH", caminos_.c_str(), 1); }

    // An opener that does this.
    void hay(const std::string& orden) const {
        const auto ruta = carpeta.ruta() / "xdg-open";
        std::ofstream(ruta) << "#!/bin/sh\n" << orden << '\n';
        std::filesystem::permissions(ruta, std::filesystem::perms::owner_all);
    }
    std::filesystem::path huella() const { return carpeta.ruta() / "huella"; }

    CarpetaTemporal carpeta;
    BucleQt bucle;
    RelojPrueba reloj;
    int fallos = 0;

   private:
    std::string caminos_;
};

TEST_F(AbridorDelEscritorio, GetsTheWholePathAsOneArgument) {
    hay("printf '%s|%s' \"$#\" \"$1\" >" + huella().string() + ".a; /bin/mv " + huella().string() + ".a " +
        huella().string());
    Abridor abridor(bucle, reloj);
    const auto ruta = carpeta.ruta() / "Est. \"Norte\" $HOME 7_3_2004.CSV";
    abridor.abrir(ruta, [&] { ++fallos; });
    ASSERT_TRUE(QTest::qWaitFor([&] { return std::filesystem::exists(huella()); }));
    std::string escrito;
    std::getline(std::ifstream(huella()), escrito);
    EXPECT_EQ(escrito, "1|" + ruta.string());
}

TEST_F(AbridorDelEscritorio, AFailureIsToldOnce) {
    hay("exit 4");
    Abridor abridor(bucle, reloj);
    abridor.abrir("/tmp/a.CSV", [&] { ++fallos; });
    EXPECT_EQ(fallos, 0) << "nothing is waited for";
    EXPECT_TRUE(QTest::qWaitFor([&] { return fallos > 0; }));
    QTest::qWait(1);
    EXPECT_EQ(fallos, 1);
}

TEST_F(AbridorDelEscritorio, WhatOpenedIsNoFailure) {
    hay("case $1 in */b.CSV) exit 3 ;; esac; echo a >" + huella().string());
    Abridor abridor(bucle, reloj);
    bool otro = false;
    abridor.abrir("/tmp/a.CSV", [&] { ++fallos; });
    ASSERT_TRUE(QTest::qWaitFor([&] { return std::filesystem::exists(huella()); }));
    abridor.abrir("/tmp/b.CSV", [&] { otro = true; });
    EXPECT_TRUE(QTest::qWaitFor([&] { return otro; }));
    EXPECT_EQ(fallos, 0);
}

// Without a desktop the opener stays until the opened program ends: after a minute that is the program's own
// end, and no failure to open.
TEST_F(AbridorDelEscritorio, AFailureAfterAMinuteIsTheOpenedProgramsOwn) {
    const auto tubo = (carpeta / "tubo").string();
    ASSERT_EQ(::mkfifo(tubo.c_str(), 0600), 0);
    hay("echo $$ >" + huella().string() + ".a; /bin/mv " + huella().string() + ".a " + huella().string() +
        "; read linea <" + tubo + "; exit 4");
    for (const auto& [pasa, dichos] : {std::pair(59999ms, 1), std::pair(60000ms, 0)}) {
        std::filesystem::remove(huella());
        fallos = 0;
        Abridor abridor(bucle, reloj);
        abridor.abrir("/tmp/a.CSV", [&] { ++fallos; });
        ASSERT_TRUE(QTest::qWaitFor([&] { return std::filesystem::exists(huella()); }));
        reloj.dejarPasar(pasa);
        std::string proceso;
        std::getline(std::ifstream(huella()), proceso);
        std::fstream sigue(tubo, std::ios::in | std::ios::out);
        sigue << "ya" << std::endl;
        // It is there until its end was heard.
        ASSERT_TRUE(QTest::qWaitFor([&] { return !std::filesystem::exists("/proc/" + proceso); }));
        EXPECT_EQ(fallos, dichos);
    }
}

TEST_F(AbridorDelEscritorio, WithoutAProgramItIsToldAtOnce) {
    Abridor abridor(bucle, reloj);
    abridor.abrir("/tmp/a.CSV", [&] { ++fallos; });
    EXPECT_EQ(fallos, 1);
}

}  // namespace
}  // namespace telvane
