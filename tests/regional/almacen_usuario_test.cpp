// The user's regional store, and the session's locale behind it.
#include "regional/almacen_usuario.h"

#include <stdlib.h>

#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>

#include "regional/module1.h"
#include "tests/apoyo/carpeta_temporal.h"

// The C library keeps what it makes of LOCPATH each time a locale is looked for there.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:argz_add_sep";
}

namespace telvane {
namespace {

std::string completo(const std::string& corto) {
    return std::string(kClaveRegional) + corto;
}

class Almacen : public ::testing::Test {
   protected:
    Almacen() { locale("C"); }
    static void locale(const char* nombre) {
        setenv("LC_ALL", nombre, 1);
        setenv("LANG", nombre, 1);
    }
    void escribir(const std::string& texto) {
        std::filesystem::create_directories(ruta.parent_path());
        std::ofstream(ruta) << texto;
    }

    CarpetaTemporal temporal;
    std::filesystem::path carpeta = temporal.ruta();
    std::filesystem::path ruta = carpeta / "telvane" / "regional.conf";
};

TEST_F(Almacen, AValueThatIsNotInTheFileComesFromTheSessionsLocale) {
    AlmacenUsuario almacen(ruta);
    EXPECT_EQ(almacen.RegRead(completo("sDecimal")), ".");
    EXPECT_EQ(almacen.RegRead(completo("sThousand")), "");
    EXPECT_EQ(almacen.RegRead(completo("sShortDate")), "MM/dd/yy");
    EXPECT_EQ(almacen.RegRead(completo("sTimeFormat")), "HH:mm:ss");
    EXPECT_FALSE(std::filesystem::exists(ruta)) << "reading writes nothing";
}

TEST_F(Almacen, ALocaleThatDoesNotExistCountsAsC) {
    locale("xx_ROTO.UTF-8");
    EXPECT_EQ(valorDelLocale("sDecimal"), ".");
    EXPECT_EQ(valorDelLocale("sShortDate"), "MM/dd/yy");
}

// Locales are installed on some machines only; the ones that are there must give their own conventions.
struct CasoLocale {
    const char* nombre;
    const char* decimal;
    const char* miles;
    const char* fecha;
    const char* hora;
    const char* lista;
};

void PrintTo(const CasoLocale& caso, std::ostream* flujo) {
    *flujo << caso.nombre;
}

// Made from the system's own sources, because hardly a machine has all of them.
class AlmacenConLocale : public Almacen, public ::testing::WithParamInterface<CasoLocale> {
   protected:
    AlmacenConLocale() { setenv("LOCPATH", CARPETA_LOCALES, 1); }
    ~AlmacenConLocale() override { unsetenv("LOCPATH"); }
};

TEST_P(AlmacenConLocale, GivesWhatIsNotInTheFile) {
    const auto& caso = GetParam();
    locale(caso.nombre);
    AlmacenUsuario almacen(ruta);
    EXPECT_EQ(almacen.RegRead(completo("sDecimal")), caso.decimal);
    EXPECT_EQ(almacen.RegRead(completo("sThousand")), caso.miles);
    EXPECT_EQ(almacen.RegRead(completo("sShortDate")), caso.fecha);
    EXPECT_EQ(almacen.RegRead(completo("sTimeFormat")), caso.hora);
    EXPECT_EQ(almacen.RegRead(completo("sList")), caso.lista);
}

INSTANTIATE_TEST_SUITE_P(Locales, AlmacenConLocale,
                         ::testing::Values(CasoLocale{"es_ES.UTF-8", ",", ".", "dd/MM/yy", "HH:mm:ss", ";"},
                                           CasoLocale{"es_AR.UTF-8", ",", ".", "dd/MM/yy", "HH:mm:ss", ";"},
                                           CasoLocale{"en_US.UTF-8", ".", ",", "MM/dd/yyyy", "hh:mm:ss tt",
                                                      ","}),
                         [](const auto& caso) { return std::string(caso.param.nombre).substr(0, 5); });

TEST_F(Almacen, WhatIsWrittenIsReadBackAndTheRestKeepsFollowingTheLocale) {
    AlmacenUsuario almacen(ruta);
    almacen.RegWrite(completo("sShortDate"), "dd/MM/yyyy");
    almacen.RegWrite(completo("sList"), ",");
    EXPECT_EQ(AlmacenUsuario(ruta).RegRead(completo("sShortDate")), "dd/MM/yyyy");
    EXPECT_EQ(AlmacenUsuario(ruta).RegRead(completo("sList")), ",");
    EXPECT_EQ(AlmacenUsuario(ruta).RegRead(completo("sDecimal")), ".");
}

TEST_F(Almacen, AnEmptyValueIsAValue) {
    escribir("sThousand=\n# comentario\n\nsDecimal=,\r\n");
    AlmacenUsuario almacen(ruta);
    EXPECT_EQ(almacen.RegRead(completo("sThousand")), "");
    EXPECT_EQ(almacen.RegRead(completo("sDecimal")), ",");
}

TEST_F(Almacen, AStoreThatCannotBeReadOrParsedIsAFailure) {
    escribir("esto no es un ajuste\n");
    try {
        AlmacenUsuario(ruta).RegRead(completo("sDecimal"));
        ADD_FAILURE();
    } catch (const ErrorRegistro& fallo) {
        EXPECT_EQ(fallo.what(), "el archivo de ajustes regionales está dañado: " + ruta.string() +
                                    ". Bórrelo y abra otra vez el programa");
    }
    std::filesystem::remove(ruta);
    std::filesystem::create_directories(ruta);
    EXPECT_THROW(AlmacenUsuario(ruta).RegRead(completo("sDecimal")), ErrorRegistro);
    EXPECT_THROW(AlmacenUsuario({}).RegRead(completo("sDecimal")), ErrorRegistro);
}

TEST_F(Almacen, AnUnknownNameIsAFailure) {
    AlmacenUsuario almacen(ruta);
    EXPECT_THROW(almacen.RegRead("sDecimal"), ErrorRegistro);
    EXPECT_THROW(almacen.RegRead(completo("sOtro")), ErrorRegistro);
    EXPECT_THROW(almacen.RegWrite(completo("sOtro"), "x"), ErrorRegistro);
}

TEST_F(Almacen, AFailedWriteIsTold) {
    std::ofstream(carpeta / "telvane") << "no es una carpeta";
    EXPECT_THROW(AlmacenUsuario(ruta).RegWrite(completo("sList"), ","), ErrorRegistro);
}

}  // namespace
}  // namespace telvane
