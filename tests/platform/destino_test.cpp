// What may be written where.
#include "platform/destino.h"

#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <fstream>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/guardado.h"
#include "tests/apoyo/carpeta_temporal.h"
#include "tests/apoyo/disco_chico.h"
#include "tests/apoyo/usuario_corriente.h"

namespace telvane {
namespace {

namespace fs = std::filesystem;
using testing::EndsWith;
using testing::HasSubstr;

constexpr std::array<std::string_view, 1> kVedadas = {".rgt"};

class DestinoDe : public ::testing::Test {
   protected:
    fs::path ruta(const std::string& nombre) const { return carpeta_ / nombre; }
    void poner(const std::string& nombre) const { std::ofstream(ruta(nombre)) << "viejo"; }
    static std::string negativa(const fs::path& ruta, const ReglaDestino& regla = {}) {
        try {
            revisarDestino(ruta, regla);
        } catch (const ErrorGuardado& error) {
            return error.what();
        }
        return "";
    }
    static bool porNombre(const fs::path& ruta) {
        try {
            revisarDestino(ruta, {.vedadas = kVedadas});
        } catch (const ErrorNombre&) {
            return true;
        }
        return false;
    }

    CarpetaTemporal temporal_;
    const fs::path& carpeta_ = temporal_.ruta();
};

TEST_F(DestinoDe, ADataBaseIsNeverReplacedWhateverItsNameNorWhatStandsBesideIt) {
    for (const auto* nombre : {"a.sqlite", "a.csv", "a.sqlite-wal", "a.sqlite-shm", "b-wal"}) poner(nombre);
    std::ofstream(ruta("a.sqlite")) << "SQLite format 3" << std::string(85, '\0');
    std::ofstream(ruta("datos.csv")) << "SQLite format 3" << std::string(85, '\0');
    fs::create_symlink("a.sqlite", ruta("enlace.csv"));
    for (const auto* nombre :
         {"a.sqlite", "datos.csv", "enlace.csv", "a.sqlite-wal", "a.sqlite-shm", "a.sqlite-journal"})
        EXPECT_THAT(negativa(ruta(nombre)), HasSubstr("base de datos; dé otro nombre")) << nombre;
    EXPECT_TRUE(porNombre(ruta("a.sqlite")) && porNombre(ruta("a.sqlite-journal")));
    EXPECT_THAT(negativa(ruta("a.sqlite"), {.nuevo = true}), HasSubstr("base de datos; dé otro nombre"));
    for (const auto* nombre : {"a.csv", "b-wal", "nuevo.csv"})
        EXPECT_EQ(negativa(ruta(nombre)), "") << nombre;
}

TEST_F(DestinoDe, APipeIsWrittenToWhereItIsTakenAndStaysAPipe) {
    ASSERT_EQ(::mkfifo(ruta("tubo").c_str(), 0600), 0);
    EXPECT_EQ(negativa(ruta("tubo")),
              noGuardado(ruta("tubo"), "no es un archivo normal. Dé otro nombre").what());
    const auto destino = revisarDestino(ruta("tubo"), {.corriente = true});
    EXPECT_TRUE(destino.corriente);
    EXPECT_EQ(abrirCorriente(destino), -1) << "nobody reads yet";
    const Descriptor lector(::open(ruta("tubo").c_str(), O_RDONLY | O_NONBLOCK));
    const Descriptor escritor(abrirCorriente(destino));
    EXPECT_GE(escritor(), 0);
    EXPECT_TRUE(fs::is_fifo(ruta("tubo")));
}

TEST_F(DestinoDe, OnlyTheDevicesThatTakeText) {
    EXPECT_TRUE(revisarDestino("/dev/null", {.corriente = true}).corriente);
    EXPECT_NE(negativa("/dev/full", {.corriente = true}), "");
    EXPECT_NE(negativa("/dev/zero", {.corriente = true}), "");
    EXPECT_NE(negativa("/dev/null"), "");
    if (::mknod(ruta("memoria").c_str(), S_IFCHR | 0600, makedev(1, 1)) != 0)
        GTEST_SKIP() << "making devices is not permitted here";
    EXPECT_NE(negativa(ruta("memoria"), {.corriente = true}), "");
    ASSERT_EQ(::mknod(ruta("disco").c_str(), S_IFBLK | 0600, makedev(259, 77)), 0);
    EXPECT_NE(negativa(ruta("disco"), {.corriente = true}), "");
}

TEST_F(DestinoDe, ATerminalThatIsNotOursIsRefused) {
    const Descriptor maestro(::posix_openpt(O_RDWR | O_NOCTTY));
    ASSERT_EQ(::grantpt(maestro()), 0);
    ASSERT_EQ(::unlockpt(maestro()), 0);
    EXPECT_THAT(negativa(::ptsname(maestro()), {.corriente = true}), HasSubstr("no es un archivo normal"));
}

// As a FIFO without a reader cannot be opened, so cannot a terminal that is none.
TEST_F(DestinoDe, OnlyAPipeWaitsForItsReader) {
    EXPECT_EXIT(
        {
            ::setsid();
            const auto motivo = negativa("/dev/tty", {.corriente = true});
            try {
                abrirCorriente({.pedido = "/dev/tty", .ruta = "/dev/tty", .corriente = true});
            } catch (const ErrorGuardado&) {
                ::_exit(motivo ==
                                "no se pudo guardar /dev/tty: el dispositivo no existe. Revise que esté "
                                "enchufado, y su nombre"
                            ? 0
                            : 2);
            }
            ::_exit(1);
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(DestinoDe, AnOpenFileIsTheSameAsByItsName) {
    poner("a");
    poner("b");
    const Descriptor abierto(::open(ruta("a").c_str(), O_RDONLY | O_CLOEXEC));
    EXPECT_EQ(identidad(abierto()), identidad(ruta("a")));
    EXPECT_NE(identidad(abierto()), identidad(ruta("b")));
    EXPECT_EQ(identidad(Descriptor(::open("/dev/null", O_RDONLY | O_CLOEXEC))()), std::nullopt);
    EXPECT_EQ(identidad(-1), std::nullopt);
}

TEST_F(DestinoDe, ASocketIsRefused) {
    const Descriptor zocalo(::socket(AF_UNIX, SOCK_STREAM, 0));
    sockaddr_un direccion{};
    direccion.sun_family = AF_UNIX;
    const auto nombre = ruta("zocalo").string();
    ASSERT_LT(nombre.size(), sizeof direccion.sun_path);
    nombre.copy(direccion.sun_path, nombre.size());
    ASSERT_EQ(::bind(zocalo(), reinterpret_cast<const sockaddr*>(&direccion), sizeof direccion), 0);
    EXPECT_THAT(negativa(ruta("zocalo"), {.corriente = true}), HasSubstr("no es un archivo normal"));
}

TEST_F(DestinoDe, AForbiddenNameIsRefusedHoweverWrittenAndThroughALink) {
    EXPECT_TRUE(porNombre(ruta("a.rgt")));
    EXPECT_TRUE(porNombre(ruta("a.RgT")));
    EXPECT_TRUE(porNombre(ruta(".rgt")));
    EXPECT_FALSE(porNombre(ruta("a.rgt.csv")));
    EXPECT_FALSE(porNombre(ruta("argt")));
    poner("b.rgt");
    fs::create_symlink("b.rgt", ruta("tabla.csv"));
    EXPECT_TRUE(porNombre(ruta("tabla.csv")));
    fs::create_symlink("todavia-no.rgt", ruta("otra.csv"));
    EXPECT_TRUE(porNombre(ruta("otra.csv")));
}

TEST_F(DestinoDe, WhatIsToBeNewMayNotBeThere) {
    poner("x");
    EXPECT_EQ(negativa(ruta("x"), {.nuevo = true}),
              noGuardado(ruta("x"), "ya existe. Dé otro nombre").what());
    fs::create_symlink("x", ruta("enlace"));
    EXPECT_EQ(negativa(ruta("enlace"), {.nuevo = true}),
              noGuardado(ruta("enlace"), "ya existe. Dé otro nombre").what());
    EXPECT_EQ(negativa(ruta("y"), {.nuevo = true}), "");
}

TEST_F(DestinoDe, WhatDoesNotFitIsToldBefore) {
    const DiscoChico disco(ruta("disco"));
    if (!disco.montado()) GTEST_SKIP() << "mounting is not permitted here";
    EXPECT_EQ(negativa(ruta("disco/x"), {.bytes = 60'000}), "");
    EXPECT_EQ(negativa(ruta("disco/x"), {.bytes = 70'000}),
              noGuardado(ruta("disco/x"), "no queda espacio en el disco. Haga sitio y repita").what());
}

TEST_F(DestinoDe, WhatTheSessionDoesNotAllowIsToldBefore) {
    rlimit antes{};
    ::getrlimit(RLIMIT_FSIZE, &antes);
    const rlimit limite{1000, antes.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limite), 0);
    EXPECT_THAT(negativa(ruta("x"), {.bytes = 1001}), HasSubstr("(ulimit -f)"));
    EXPECT_EQ(negativa(ruta("x"), {.bytes = 1000}), "");
    ::setrlimit(RLIMIT_FSIZE, &antes);
}

TEST_F(DestinoDe, AMountPointIsRefused) {
    poner("de");
    poner("sobre");
    if (::mount(ruta("de").c_str(), ruta("sobre").c_str(), nullptr, MS_BIND, nullptr) != 0)
        GTEST_SKIP() << "mounting is not permitted here";
    EXPECT_EQ(negativa(ruta("sobre")),
              noGuardado(ruta("sobre"), "es un punto de montaje. Dé otro nombre").what());
    ::umount(ruta("sobre").c_str());
}

// Between two openings somebody could put another file there.
TEST_F(DestinoDe, WhatStandsThereIsOpenedOnce) {
    std::ofstream(ruta("x")) << std::string(100, 'x');
    const Descriptor aviso(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
    ASSERT_GE(::inotify_add_watch(aviso(), ruta("x").c_str(), IN_OPEN | IN_CLOSE_NOWRITE), 0);
    std::string visto;
    EXPECT_EQ(negativa(ruta("x"), {.porque =
                                       [&](std::span<const std::uint8_t> bytes) {
                                           visto.assign(bytes.begin(), bytes.end());
                                           return std::string();
                                       },
                                   .vista = 40}),
              "");
    EXPECT_EQ(visto, std::string(40, 'x'));
    std::array<char, 4096> sucesos{};
    // Equal ones in a row would be told as one; these have no name behind them.
    EXPECT_EQ(::read(aviso(), sucesos.data(), sucesos.size()),
              static_cast<ssize_t>(2 * sizeof(inotify_event)));
}

// As "mkdir -p" does with those on its way: something is to be put into it.
TEST_F(DestinoDe, AFolderThatIsMadeLetsItsOwnerInWhateverTheUmask) {
    const UsuarioCorriente corriente(temporal_.ruta());
    ASSERT_TRUE(corriente.hecho());
    for (const mode_t mascara : {0777U, 0177U, 0022U}) {
        const auto carpeta = ruta(std::to_string(mascara)) / "a" / "b";
        {
            const Mascara nueva(mascara);
            crearCarpeta(carpeta);
            EXPECT_EQ(::umask(mascara), mascara);
        }
        for (const auto& una : {carpeta, carpeta.parent_path(), carpeta.parent_path().parent_path()}) {
            struct stat datos {};
            ASSERT_EQ(::stat(una.c_str(), &datos), 0);
            EXPECT_EQ(datos.st_mode & 0777U, (0777U & ~mascara) | S_IRWXU);
        }
    }
}

TEST_F(DestinoDe, AnEmptyNameIsNone) {
    EXPECT_THAT(negativa(""), EndsWith("falta el nombre. Dé el de un archivo"));
}

TEST_F(DestinoDe, ANameWithASlashAtItsEndIsAFolders) {
    poner("x");
    fs::create_directory(ruta("d"));
    for (const auto* nombre : {"nada/", "x/", "d/", "d"})
        EXPECT_EQ(negativa(ruta(nombre)),
                  noGuardado(ruta(nombre), "es una carpeta. Dé el nombre de un archivo").what());
}

TEST_F(DestinoDe, AFolderIsKnownToBePossibleBeforeItIsMade) {
    const auto queja = [](const fs::path& carpeta) {
        try {
            exigirQueSePuedaCrear(carpeta);
        } catch (const ErrorGuardado& error) {
            return std::string(error.what());
        }
        return std::string();
    };
    poner("x");
    fs::create_symlink("nada", ruta("roto"));
    EXPECT_EQ(queja(carpeta_), "");
    EXPECT_EQ(queja(ruta("a/b/c")), "");
    EXPECT_EQ(queja("a/b"), "");
    EXPECT_EQ(queja(ruta("x/a/b")), "no se pudo crear la carpeta " + ruta("x/a/b").string() +
                                        ": una parte de la ruta no es una carpeta. Revise la ruta");
    EXPECT_THAT(queja(ruta("x")), EndsWith("una parte de la ruta no es una carpeta. Revise la ruta"));
    EXPECT_THAT(queja(ruta("roto/a")), HasSubstr("no existe la carpeta"));
    EXPECT_THAT(queja("/proc/a/b"), HasSubstr("ahí el sistema no guarda archivos"));
    EXPECT_FALSE(fs::exists(ruta("a")));
}

TEST_F(DestinoDe, WhatIsReadIsNeverReplacedByWhateverName) {
    poner("a");
    fs::create_directory(ruta("d"));
    fs::create_symlink("a", ruta("simbolico"));
    fs::create_hard_link(ruta("a"), ruta("duro"));
    fs::create_directory_symlink("d", ruta("otra"));
    fs::create_symlink("d/x", ruta("aunNo"));
    ReglaDestino regla;
    for (const auto* leido : {"a", "d/x"}) regla.leidos.agregar(ruta(leido));
    for (const auto* salida : {"a", "./d/../a", "simbolico", "duro", "d/x", "otra/x", "aunNo"})
        EXPECT_THAT(negativa(ruta(salida), regla), EndsWith("de ahí se lee lo que se guarda. Dé otro nombre"))
            << salida;
    for (const auto* salida : {"b", "d/X", "otra/a"}) EXPECT_EQ(negativa(ruta(salida), regla), "") << salida;
}

TEST_F(DestinoDe, WhatIsReadFromADescriptorCountsIfItIsAFile) {
    poner("a");
    const Descriptor abierto(::open(ruta("a").c_str(), O_RDONLY | O_CLOEXEC));
    const Descriptor nulo(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    ReglaDestino regla;
    for (const int descriptor : {abierto(), nulo(), -1}) regla.leidos.agregar(descriptor);
    EXPECT_THAT(negativa(ruta("a"), regla), EndsWith("de ahí se lee lo que se guarda. Dé otro nombre"));
    EXPECT_THROW(regla.leidos.exigirOtro(abierto(), "la salida"), ErrorNombre);
    EXPECT_NO_THROW(regla.leidos.exigirOtro(nulo(), "la salida"));
    EXPECT_NO_THROW(regla.leidos.exigirOtro(-1, "la salida"));
}

TEST(ConSufijo, ANameThatIsTooLongIsCutAtAWholeCharacter) {
    EXPECT_EQ(conSufijo("a/b", ".parcial"), fs::path("a/b.parcial"));
    const std::string largo(NAME_MAX, 'n');
    EXPECT_EQ(conSufijo(largo, ".parcial").string(), std::string(NAME_MAX - 8, 'n') + ".parcial");
    std::string enies;
    while (enies.size() + 2 < NAME_MAX) enies += "ñ";
    const auto corto = conSufijo(enies, ".p").string();
    EXPECT_LE(corto.size(), std::size_t{NAME_MAX});
    EXPECT_EQ((corto.size() - 2) % 2, 0U) << "half a character is none";
}

}  // namespace
}  // namespace telvane
