#include "platform/guardado.h"

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

#include "tests/apoyo/carpeta_temporal.h"
#include "tests/apoyo/disco_chico.h"
#include "tests/apoyo/leer_todo.h"

namespace telvane {
namespace {

namespace fs = std::filesystem;

mode_t modoDe(const fs::path& ruta) {
    struct stat datos {};
    EXPECT_EQ(::stat(ruta.c_str(), &datos), 0);
    return datos.st_mode & 07777;
}

class Guardado : public ::testing::Test {
   protected:
    fs::path ruta(const std::string& nombre) const { return carpeta_ / nombre; }
    std::size_t entradas() const {
        return static_cast<std::size_t>(
            std::distance(fs::directory_iterator(carpeta_), fs::directory_iterator()));
    }
    // The reason with which saving is refused; empty if it is not.
    static std::string negativa(const fs::path& ruta, std::string_view texto = "nuevo") {
        try {
            guardarAtomico(ruta, texto);
        } catch (const ErrorGuardado& error) {
            return error.what();
        }
        return "";
    }

    CarpetaTemporal temporal_;
    const fs::path& carpeta_ = temporal_.ruta();
};

// Saves as a user who is not root, in a child, and ends it with status 0 if the reason is the expected one.
[[noreturn]] void guardarComoCualquiera(const fs::path& ruta, const std::string& motivo) {
    constexpr uid_t kNadie = 65534;
    const bool otro = ::geteuid() != 0 || ::setuid(kNadie) == 0;
    std::string dicho;
    try {
        guardarAtomico(ruta, "nuevo");
    } catch (const ErrorGuardado& error) {
        dicho = error.what();
    }
    std::fprintf(stderr, "%s\n", dicho.c_str());
    ::_exit(otro && dicho == motivo ? 0 : 1);
}

TEST_F(Guardado, CreatesTheFileWithItsBytes) {
    const std::string bytes("a\0b\r\n\xFF", 6);
    guardarAtomico(ruta("x.csv"), bytes);
    EXPECT_EQ(leerTodo(ruta("x.csv")), bytes);
    EXPECT_EQ(entradas(), 1u);
}

TEST_F(Guardado, AnEmptyFileIsSavedAsWell) {
    guardarAtomico(ruta("x.csv"), "viejo");
    guardarAtomico(ruta("x.csv"), "");
    EXPECT_EQ(leerTodo(ruta("x.csv")), "");
}

TEST_F(Guardado, ReplacesTheContentAndKeepsTheMode) {
    guardarAtomico(ruta("x.csv"), "viejo y largo");
    fs::permissions(ruta("x.csv"), fs::perms(0640));
    guardarAtomico(ruta("x.csv"), "nuevo");
    EXPECT_EQ(leerTodo(ruta("x.csv")), "nuevo");
    EXPECT_EQ(modoDe(ruta("x.csv")), mode_t{0640});
    EXPECT_EQ(entradas(), 1u);
}

TEST_F(Guardado, ReplacingKeepsTheOwner) {
    if (::geteuid() != 0) GTEST_SKIP() << "only root gives files away";
    guardarAtomico(ruta("x.csv"), "viejo");
    ASSERT_EQ(::chown(ruta("x.csv").c_str(), 1234, 4321), 0);
    ASSERT_EQ(::chmod(ruta("x.csv").c_str(), 04750), 0);
    guardarAtomico(ruta("x.csv"), "nuevo");
    struct stat datos {};
    ASSERT_EQ(::stat(ruta("x.csv").c_str(), &datos), 0);
    EXPECT_EQ(datos.st_uid, uid_t{1234});
    EXPECT_EQ(datos.st_gid, gid_t{4321});
    EXPECT_EQ(modoDe(ruta("x.csv")), mode_t{04750});
}

// What the old group might do, ours may not do for that.
TEST_F(Guardado, WhereTheGroupIsNotKeptTheNewOneMayWhatEverybodyMay) {
    if (::geteuid() != 0) GTEST_SKIP() << "the file must be another user's";
    guardarAtomico(ruta("x.csv"), "viejo");
    ASSERT_EQ(::chown(ruta("x.csv").c_str(), 1234, 4321), 0);
    ASSERT_EQ(::chmod(ruta("x.csv").c_str(), 02676), 0);
    fs::permissions(carpeta_, fs::perms(0777));
    EXPECT_EXIT(guardarComoCualquiera(ruta("x.csv"), ""), ::testing::ExitedWithCode(0), "");
    EXPECT_EQ(leerTodo(ruta("x.csv")), "nuevo");
    EXPECT_EQ(modoDe(ruta("x.csv")), mode_t{0666});
}

// The disk is given a long one before its end.
TEST_F(Guardado, ALongFileThatIsWrittenInPiecesIsWhole) {
    std::string todo;
    {
        GuardadoAtomico guardado(ruta("x.csv"));
        while (todo.size() < (10U << 20U)) {
            const auto pieza = std::to_string(todo.size()) + std::string(100'000, ',');
            guardado.escribir(pieza);
            todo += pieza;
        }
        EXPECT_FALSE(fs::exists(ruta("x.csv")));
        guardado.terminar();
    }
    EXPECT_TRUE(leerTodo(ruta("x.csv")) == todo);
    EXPECT_EQ(entradas(), 1u);
}

TEST_F(Guardado, AFileThatIsToBeNewReplacesNone) {
    guardarAtomico(ruta("x.rgt"), "viejo", {.nuevo = true});
    EXPECT_THROW(guardarAtomico(ruta("x.rgt"), "nuevo", {.nuevo = true}), ErrorGuardado);
    // It appears while the new one is being written.
    ArchivoPendiente pendiente(revisarDestino(ruta("y.rgt"), {.nuevo = true}));
    pendiente.escribir(comoBytes("nuevo"));
    guardarAtomico(ruta("y.rgt"), "de otro");
    EXPECT_THROW(pendiente.colocar(), ErrorGuardado);
    EXPECT_EQ(leerTodo(ruta("x.rgt")), "viejo");
    EXPECT_EQ(leerTodo(ruta("y.rgt")), "de otro");
}

TEST_F(Guardado, ANewFileFollowsTheUsersMask) {
    const auto antes = ::umask(027);
    guardarAtomico(ruta("x.csv"), "nuevo");
    const auto despues = ::umask(antes);
    EXPECT_EQ(modoDe(ruta("x.csv")), mode_t{0640});
    EXPECT_EQ(despues, mode_t{027}) << "the mask is left as it was";
}

TEST_F(Guardado, ALinkIsWrittenWhereItPoints) {
    fs::create_directory(ruta("otra"));
    guardarAtomico(ruta("otra/x.csv"), "viejo");
    fs::create_symlink("otra/x.csv", ruta("enlace"));
    fs::create_symlink("enlace", ruta("enlace2"));
    guardarAtomico(ruta("enlace2"), "nuevo");
    EXPECT_EQ(leerTodo(ruta("otra/x.csv")), "nuevo");
    EXPECT_TRUE(fs::is_symlink(ruta("enlace")));
    EXPECT_TRUE(fs::is_symlink(ruta("enlace2")));
}

TEST_F(Guardado, ALinkWithoutATargetCreatesIt) {
    fs::create_symlink(ruta("x.csv"), ruta("enlace"));
    guardarAtomico(ruta("enlace"), "nuevo");
    EXPECT_FALSE(fs::is_symlink(ruta("x.csv")));
    EXPECT_EQ(leerTodo(ruta("x.csv")), "nuevo");
}

TEST_F(Guardado, ALinkThatBitesItsTailIsRefused) {
    fs::create_symlink("b", ruta("a"));
    fs::create_symlink("a", ruta("b"));
    EXPECT_EQ(negativa(ruta("a")),
              noGuardado(ruta("a"), "demasiados enlaces seguidos. Dé otro nombre").what());
}

TEST_F(Guardado, AFolderIsRefused) {
    fs::create_directory(ruta("datos"));
    EXPECT_EQ(negativa(ruta("datos")),
              noGuardado(ruta("datos"), "es una carpeta. Dé el nombre de un archivo").what());
    EXPECT_EQ(entradas(), 1u);
}

TEST_F(Guardado, WhatIsNoRegularFileIsRefusedAndStaysAsItWas) {
    ASSERT_EQ(::mkfifo(ruta("tubo").c_str(), 0600), 0);
    EXPECT_EQ(negativa(ruta("tubo")),
              noGuardado(ruta("tubo"), "no es un archivo normal. Dé otro nombre").what());
    EXPECT_TRUE(fs::is_fifo(ruta("tubo")));
    EXPECT_EQ(negativa("/dev/null"), "no se pudo guardar /dev/null: no es un archivo normal. Dé otro nombre");
}

TEST_F(Guardado, AFolderThatIsNotThereIsRefused) {
    EXPECT_EQ(negativa(ruta("nada/x.csv")),
              noGuardado(ruta("nada/x.csv"),
                         "no existe la carpeta " + ruta("nada").string() + ". Créela, o dé otra")
                  .what());
}

TEST_F(Guardado, AFolderThatIsAFileIsRefused) {
    guardarAtomico(ruta("x"), "viejo");
    EXPECT_EQ(negativa(ruta("x/y.csv")),
              noGuardado(ruta("x/y.csv"), "una parte de la ruta no es una carpeta. Revise la ruta").what());
}

TEST_F(Guardado, ANameOfTheGreatestLengthFitsAndALongerOneIsRefused) {
    const std::string largo(255, 'n');
    guardarAtomico(ruta(largo), "nuevo");
    EXPECT_EQ(leerTodo(ruta(largo)), "nuevo");
    EXPECT_EQ(negativa(ruta(largo + "n")),
              noGuardado(ruta(largo + "n"), "el nombre es demasiado largo. Dé uno más corto").what());
    EXPECT_EQ(entradas(), 1u);
}

class SinPermiso : public Guardado {
   protected:
    // With these rights of the file and of its folder nobody but root saves it, and is told why.
    void exigirNegativa(fs::perms deArchivo, fs::perms deCarpeta, std::string_view motivo) {
        guardarAtomico(ruta("x.csv"), "viejo");
        fs::permissions(ruta("x.csv"), deArchivo);
        fs::permissions(carpeta_, deCarpeta);
        EXPECT_EXIT(guardarComoCualquiera(ruta("x.csv"), noGuardado(ruta("x.csv"), motivo).what()),
                    ::testing::ExitedWithCode(0), "");
        fs::permissions(ruta("x.csv"), fs::perms(0644));
        fs::permissions(carpeta_, fs::perms(0755));
        EXPECT_EQ(leerTodo(ruta("x.csv")), "viejo");
        EXPECT_EQ(entradas(), 1u);
    }

    static constexpr std::string_view kPida =
        "no hay permiso. Pida acceso al administrador, o dé otro nombre";
};

TEST_F(SinPermiso, AWriteProtectedFileIsRefusedAlthoughItsFolderIsNot) {
    exigirNegativa(fs::perms(0444), fs::perms(0777), kPida);
}

TEST_F(SinPermiso, AWriteProtectedFolderIsRefused) {
    exigirNegativa(fs::perms(0666), fs::perms(0555), kPida);
}

// It may be anything.
TEST_F(SinPermiso, WhatCannotBeReadIsNotReplaced) {
    exigirNegativa(fs::perms(0222), fs::perms(0777),
                   "lo que hay ahí no se puede leer (no hay permiso) y no se sabe qué es; dé otro nombre");
}

// While it lives a write beyond this length fails with EFBIG.
class LimiteDeArchivo {
   public:
    explicit LimiteDeArchivo(rlim_t bytes) {
        ::getrlimit(RLIMIT_FSIZE, &antes_);
        senial_ = std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limite{bytes, antes_.rlim_max};
        EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &limite), 0);
    }
    LimiteDeArchivo(const LimiteDeArchivo&) = delete;
    LimiteDeArchivo& operator=(const LimiteDeArchivo&) = delete;
    ~LimiteDeArchivo() {
        ::setrlimit(RLIMIT_FSIZE, &antes_);
        std::signal(SIGXFSZ, senial_);
    }

   private:
    rlimit antes_{};
    void (*senial_)(int) = nullptr;
};

TEST_F(Guardado, AWriteThatFailsHalfwayLeavesTheOldFileAndNoTemporaryOne) {
    guardarAtomico(ruta("x.csv"), "viejo");
    std::string motivo;
    {
        const LimiteDeArchivo limite(4096);
        motivo = negativa(ruta("x.csv"), std::string(100000, 'x'));
    }
    EXPECT_EQ(motivo,
              noGuardado(ruta("x.csv"),
                         "pasa del tamaño que permite la sesión (ulimit -f). Suba ese límite y repita")
                  .what());
    EXPECT_EQ(leerTodo(ruta("x.csv")), "viejo");
    EXPECT_EQ(entradas(), 1u);
}

TEST_F(Guardado, AFullDiskLeavesTheOldFileAndNoTemporaryOne) {
    const DiscoChico disco(ruta("disco"));
    if (!disco.montado()) GTEST_SKIP() << "mounting is not permitted here";
    guardarAtomico(ruta("disco/x.csv"), "viejo");
    EXPECT_EQ(negativa(ruta("disco/x.csv"), std::string(100000, 'x')),
              noGuardado(ruta("disco/x.csv"), "no queda espacio en el disco. Haga sitio y repita").what());
    EXPECT_EQ(leerTodo(ruta("disco/x.csv")), "viejo");
    EXPECT_EQ(std::distance(fs::directory_iterator(ruta("disco")), fs::directory_iterator()), 1);
}

TEST_F(Guardado, AReadOnlyDiskIsRefusedAndStaysAsItWas) {
    const DiscoChico disco(ruta("disco"));
    if (!disco.montado()) GTEST_SKIP() << "mounting is not permitted here";
    guardarAtomico(ruta("disco/x.csv"), "viejo");
    ASSERT_TRUE(disco.soloLectura());
    EXPECT_EQ(negativa(ruta("disco/x.csv")),
              noGuardado(ruta("disco/x.csv"), "el disco es de solo lectura. Dé otra carpeta").what());
    EXPECT_EQ(negativa(ruta("disco/otro.csv")),
              noGuardado(ruta("disco/otro.csv"), "el disco es de solo lectura. Dé otra carpeta").what());
    EXPECT_EQ(leerTodo(ruta("disco/x.csv")), "viejo");
}

}  // namespace
}  // namespace telvane
