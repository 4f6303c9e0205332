// What is told of a file that SQLite does not open.
#include "historico/sqlite.h"

#include <sqlite3.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <barrier>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <functional>
#include <new>
#include <string>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "historico/almacen.h"
#include "historico/almacen_sqlite.h"
#include "platform/motivos.h"
#include "platform/texto_visible.h"
#include "tests/apoyo/carpeta_temporal.h"

namespace telvane {
namespace {

constexpr auto kLectura = BaseSqlite::Acceso::lectura;
constexpr auto kEscritura = BaseSqlite::Acceso::escritura;

class BaseSqliteQueNoSeAbre : public testing::Test {
   protected:
    static std::string porque(const std::filesystem::path& ruta, BaseSqlite::Acceso acceso) {
        try {
            const BaseSqlite base(ruta, acceso, {});
        } catch (const ErrorAlmacen& error) {
            const std::string dicho = error.what();
            const auto principio = nombreVisible(ruta) + ": no se puede abrir: ";
            EXPECT_THAT(dicho, testing::StartsWith(principio));
            return dicho.substr(std::min(dicho.size(), principio.size()));
        }
        return "se abrió";
    }

    CarpetaTemporal carpeta;
};

TEST_F(BaseSqliteQueNoSeAbre, TellsTheSystemsReason) {
    std::ofstream(carpeta / "archivo") << "x";
    std::filesystem::create_directory(carpeta / "carpeta");
    EXPECT_EQ(porque(carpeta / "carpeta", kEscritura), motivoSistema(EISDIR));
    for (const auto acceso : {kLectura, kEscritura}) {
        EXPECT_EQ(porque(carpeta / "archivo" / "h.sqlite", acceso), motivoSistema(ENOTDIR));
        EXPECT_EQ(porque(carpeta / std::string(300, 'x'), acceso), motivoSistema(ENAMETOOLONG));
    }
    EXPECT_EQ(porque(carpeta / "h.sqlite", kLectura), motivoSistema(ENOENT));
    EXPECT_EQ(porque(carpeta / "falta" / "h.sqlite", kLectura), motivoSistema(ENOENT));
}

TEST_F(BaseSqliteQueNoSeAbre, TellsOfTheFolderWhereNoneCanBeMade) {
    EXPECT_EQ(porque(carpeta / "falta" / "h.sqlite", kEscritura), motivoSinCarpeta(carpeta / "falta"));
    // A folder's name is whole in it, wherever one stands.
    EXPECT_EQ(porque("falta/aquí/h.sqlite", kEscritura),
              motivoSinCarpeta(std::filesystem::current_path() / "falta" / "aquí"));
}

TEST_F(BaseSqliteQueNoSeAbre, TellsWhoMayNot) {
    if (::geteuid() == 0) GTEST_SKIP() << "a este usuario nada le está vedado";
    std::ofstream(carpeta / "h.sqlite") << "xx";
    std::filesystem::permissions(carpeta / "h.sqlite", std::filesystem::perms::none);
    for (const auto acceso : {kLectura, kEscritura})
        EXPECT_EQ(porque(carpeta / "h.sqlite", acceso), motivoSistema(EACCES));
}

// What the system said last is about something else.
TEST_F(BaseSqliteQueNoSeAbre, TellsOfNoReasonThatTheSystemDidNotGive) {
    std::filesystem::create_symlink("nudo", carpeta / "nudo");
    for (const auto acceso : {kLectura, kEscritura}) {
        for (const auto& nombre : {std::string("nudo"), std::string(600, 'x')}) {
            errno = ENOSPC;
            EXPECT_EQ(porque(carpeta / nombre, acceso), "revise sus permisos y los de su carpeta") << nombre;
        }
    }
}

// Some of what it maps beside a file it tells as a failure of the disk.
TEST(BaseSqlite, WhatFindsNoMemoryIsNoFailureOfTheDisk) {
    const BaseSqlite base("", kEscritura, {});
    for (const int codigo : {SQLITE_NOMEM, SQLITE_IOERR_NOMEM})
        EXPECT_THROW(base.fallar(codigo), std::bad_alloc) << codigo;
    EXPECT_THROW(base.fallar(SQLITE_IOERR_READ), ErrorAlmacen);
}

// What the first of two programs may find: nothing, or what one that was killed while it made it has left.
enum class Resto { nada, vacio, conDiario };
class ArchivoQueHacenDos : public testing::TestWithParam<Resto> {};

// The first night of several stations with one archive.
TEST_P(ArchivoQueHacenDos, IsMadeOnceAndIsBoths) {
    constexpr int kVeces = 40;
    for (int vez = 0; vez < kVeces; ++vez) {
        const CarpetaTemporal carpeta;
        const auto ruta = carpeta / "h.sqlite";
        if (GetParam() != Resto::nada) std::ofstream(ruta).flush();
        if (GetParam() == Resto::conDiario)
            std::ofstream(carpeta / "h.sqlite-journal") << std::string(512, '\xD9');
        std::barrier salida(2);
        const auto hacer = [&](std::string& dicho) {
            salida.arrive_and_wait();
            try {
                static_cast<void>(AlmacenSqlite::abrirParaEscribir(ruta, true, {}));
            } catch (const std::exception& error) {
                dicho = error.what();
            }
        };
        std::array<std::string, 2> dichos;
        std::thread otro(hacer, std::ref(dichos[1]));
        hacer(dichos[0]);
        otro.join();
        EXPECT_THAT(dichos, testing::Each("")) << vez;
    }
}

INSTANTIATE_TEST_SUITE_P(Desde, ArchivoQueHacenDos,
                         testing::Values(Resto::nada, Resto::vacio, Resto::conDiario));

}  // namespace
}  // namespace telvane
