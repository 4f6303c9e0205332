// The copy before a migration: nothing is lost by it, and none is kept twice.
#include "historico/copia_previa.h"

#include <unistd.h>

#include <fstream>
#include <set>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "historico/almacen.h"
#include "tests/apoyo/carpeta_temporal.h"
#include "tests/apoyo/leer_todo.h"

namespace telvane {
namespace {

// Longer than what is compared at a time, and not a whole number of that.
constexpr std::size_t kLargo = 600'001;

class CopiaPrevia : public testing::Test {
   protected:
    CopiaPrevia() { escribir(archivo, "el archivo"); }

    static void escribir(const std::filesystem::path& ruta, const std::string& texto) {
        std::ofstream(ruta, std::ios::binary) << texto;
    }
    void copiar(const std::string& que) const {
        guardarCopiaPrevia(archivo, 1, [&](const std::filesystem::path& ruta) { escribir(ruta, que); });
    }
    std::set<std::string> loQueHay() const {
        std::set<std::string> nombres;
        for (const auto& lugar : std::filesystem::directory_iterator(carpeta.ruta()))
            nombres.insert(lugar.path().filename());
        return nombres;
    }

    CarpetaTemporal carpeta;
    std::filesystem::path archivo = carpeta / "h.sqlite";
    std::string contenido = std::string(kLargo, 'x');
};

TEST_F(CopiaPrevia, OneThatIsTheSameIsFoundUnderEachOfItsNames) {
    std::set<std::string> esperado = {"h.sqlite", "h.sqlite.version1"};
    copiar(contenido);
    EXPECT_EQ(loQueHay(), esperado);
    copiar("más corto");
    copiar(contenido + "x");
    esperado.insert({"h.sqlite_2.version1", "h.sqlite_3.version1"});
    EXPECT_EQ(loQueHay(), esperado);
    for (const auto& otraVez : {contenido, std::string("más corto"), contenido + "x"}) copiar(otraVez);
    EXPECT_EQ(loQueHay(), esperado);
}

TEST_F(CopiaPrevia, OneByteWhereverItStandsMakesAnother) {
    copiar(contenido);
    int cuantas = 1;
    for (const std::size_t lugar : {std::size_t{0}, kLargo / 2, kLargo - 1}) {
        auto otro = contenido;
        otro[lugar] = 'y';
        copiar(otro);
        EXPECT_EQ(leerTodo(carpeta / ("h.sqlite_" + std::to_string(++cuantas) + ".version1")), otro);
    }
    EXPECT_EQ(leerTodo(carpeta / "h.sqlite.version1"), contenido);
}

TEST_F(CopiaPrevia, WhatIsNoFileIsPassedBy) {
    std::filesystem::create_directory(carpeta / "h.sqlite.version1");
    std::filesystem::create_symlink("nada", carpeta / "h.sqlite_2.version1");
    for (int vez = 0; vez < 2; ++vez) copiar(contenido);
    EXPECT_THAT(loQueHay(), testing::ElementsAre("h.sqlite", "h.sqlite.version1", "h.sqlite_2.version1",
                                                 "h.sqlite_3.version1"));
    EXPECT_EQ(leerTodo(carpeta / "h.sqlite_3.version1"), contenido);
}

TEST_F(CopiaPrevia, OneThatCannotBeMadeLeavesNothing) {
    const auto cortada = [](const std::filesystem::path& ruta) {
        escribir(ruta, "la mitad");
        throw ErrorAlmacen("no hay lugar");
    };
    EXPECT_THROW(guardarCopiaPrevia(archivo, 1, cortada), ErrorAlmacen);
    EXPECT_THAT(loQueHay(), testing::ElementsAre("h.sqlite"));
}

}  // namespace
}  // namespace telvane
