#include "platform/motivos.h"

#include <sys/resource.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <new>
#include <stdexcept>
#include <string_view>
#include <system_error>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/apoyo/carpeta_temporal.h"
#include "tests/apoyo/disco_chico.h"

namespace telvane {
namespace {

TEST(Motivos, SpeakSpanishWhoeverThrows) {
    EXPECT_EQ(motivoDe(std::runtime_error("revise el cable")), "revise el cable");
    EXPECT_EQ(motivoDe(std::bad_alloc()), motivoSinMemoria());
    EXPECT_EQ(motivoDe(std::system_error(EAGAIN, std::generic_category(), "thread")), motivoSistema(ENOMEM));
    EXPECT_EQ(motivoDe(std::system_error(ENOSPC, std::generic_category(), "write")),
              "no queda espacio en el disco. Haga sitio y repita");
    const std::filesystem::filesystem_error error("status", "/a/b",
                                                  std::make_error_code(std::errc::permission_denied));
    EXPECT_EQ(motivoDe(error), "/a/b: no hay permiso. Pida acceso al administrador, o dé otro nombre");
}

// The session's own limit is what stops it where there is one.
TEST(MotivoSinMemoria, NamesTheLimitThatThereIs) {
    constexpr std::string_view kSinLimite = "no queda memoria. Cierre programas y repita";
    if (motivoSinMemoria() != kSinLimite) GTEST_SKIP() << "there is a limit here";
    const auto con = [](auto recurso) {
        rlimit antes{};
        EXPECT_EQ(::getrlimit(recurso, &antes), 0);
        auto otro = antes;
        otro.rlim_cur = RLIM_INFINITY - 1;
        EXPECT_EQ(::setrlimit(recurso, &otro), 0);
        const auto dicho = motivoSistema(ENOMEM);
        EXPECT_EQ(::setrlimit(recurso, &antes), 0);
        return dicho;
    };
    EXPECT_EQ(con(RLIMIT_AS),
              "no basta la memoria que permite la sesión (ulimit -v). Suba ese límite y repita");
    EXPECT_EQ(con(RLIMIT_DATA),
              "no bastan los datos en memoria que permite la sesión (ulimit -d). Suba ese límite y repita");
    EXPECT_EQ(motivoSistema(ENOMEM), kSinLimite);
}

TEST(MotivoSistema, ErrorsOfFilesAndPortsHaveTheirPhrase) {
    for (const int numero : {ECONNRESET, EUCLEAN, EACCES, EAGAIN, EBUSY,        EDQUOT, EFBIG,  EINVAL,
                             EIO,        EISDIR,  ELOOP,  EMFILE, ENAMETOOLONG, ENODEV, ENOENT, ENOMEM,
                             ENOSPC,     ENOTDIR, ENOTTY, ENXIO,  EPERM,        EROFS,  ETXTBSY}) {
        EXPECT_EQ(motivoSistema(numero).find("error "), std::string::npos) << numero;
    }
    EXPECT_EQ(motivoSinConsejo(ENOSPC), "no queda espacio en el disco");
}

TEST(MotivoSistema, TheOthersGiveTheirNumber) {
    EXPECT_EQ(motivoSistema(9999), "error 9999 del sistema. Repita; si sigue, avise al servicio técnico");
    EXPECT_EQ(motivoSistema(0), "error 0 del sistema. Repita; si sigue, avise al servicio técnico");
}

// What is told of a failure is no use without what to do about it.
TEST(MotivoSistema, EachOneHasItsNextStep) {
    for (int numero = 0; numero < 140; ++numero)
        EXPECT_THAT(motivoSistema(numero), testing::ContainsRegex("\\. [A-Z].*[a-z]{4}")) << numero;
}

TEST(MotivoSinCarpeta, TellsWhatStandsThereInstead) {
    const CarpetaTemporal carpeta;
    std::ofstream(carpeta / "archivo") << "x";
    const auto de = [&](const std::string& nombre) { return motivoSinCarpeta(carpeta / nombre); };
    EXPECT_EQ(de("nada"), "no existe la carpeta " + (carpeta / "nada").string() + ". Créela, o dé otra");
    EXPECT_EQ(de("archivo"), (carpeta / "archivo").string() + " no es una carpeta. Dé otra carpeta");
    EXPECT_EQ(motivoSinCarpeta("/proc"), kSinArchivos);
}

TEST(MotivoSinCarpeta, OfAFullOrAReadOnlyDiskThatItIsOne) {
    const CarpetaTemporal carpeta;
    const DiscoChico disco(carpeta / "disco");
    if (!disco.montado()) GTEST_SKIP() << "mounting is not permitted here";
    ASSERT_TRUE(disco.sinMasNombres());
    EXPECT_EQ(motivoSinCarpeta(carpeta / "disco"), "no queda espacio en el disco. Haga sitio y repita");
    ASSERT_TRUE(disco.soloLectura());
    EXPECT_EQ(motivoSinCarpeta(carpeta / "disco"), "el disco es de solo lectura. Dé otra carpeta");
}

}  // namespace
}  // namespace telvane
