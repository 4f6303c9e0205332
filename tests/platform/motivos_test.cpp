#include "platform/motivos.h"

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <new>
#include <stdexcept>
#include <system_error>

#include <gtest/gtest.h>

#include "tests/apoyo/carpeta_temporal.h"

namespace telvane {
namespace {

TEST(Motivos, SpeakSpanishWhoeverThrows) {
    EXPECT_EQ(motivoDe(std::runtime_error("revise el cable")), "revise el cable");
    EXPECT_EQ(motivoDe(std::bad_alloc()), "no queda memoria");
    EXPECT_EQ(motivoDe(std::system_error(ENOSPC, std::generic_category(), "write")),
              "no queda espacio en el disco");
    const std::filesystem::filesystem_error error("status", "/a/b",
                                                  std::make_error_code(std::errc::permission_denied));
    EXPECT_EQ(motivoDe(error), "/a/b: no hay permiso");
}

TEST(MotivoSistema, ErrorsOfFilesAndPortsHaveTheirPhrase) {
    for (const int numero :
         {EACCES, EAGAIN, EBUSY,  EDQUOT, EFBIG,   EINVAL, EIO,   EISDIR, ELOOP, EMFILE, ENAMETOOLONG,
          ENODEV, ENOENT, ENOMEM, ENOSPC, ENOTDIR, ENOTTY, ENXIO, EPERM,  EROFS, ETXTBSY}) {
        EXPECT_EQ(motivoSistema(numero).find("error "), std::string::npos) << numero;
    }
    EXPECT_EQ(motivoSistema(ENOSPC), "no queda espacio en el disco");
}

TEST(MotivoSistema, TheOthersGiveTheirNumber) {
    EXPECT_EQ(motivoSistema(9999), "error 9999 del sistema");
    EXPECT_EQ(motivoSistema(0), "error 0 del sistema");
}

TEST(MotivoSinCarpeta, TellsWhatStandsThereInstead) {
    const CarpetaTemporal carpeta;
    std::ofstream(carpeta / "archivo") << "x";
    const auto de = [&](const std::string& nombre) { return motivoSinCarpeta(carpeta / nombre); };
    EXPECT_EQ(de("nada"), "no existe la carpeta " + (carpeta / "nada").string());
    EXPECT_EQ(de("archivo"), (carpeta / "archivo").string() + " no es una carpeta");
    EXPECT_EQ(motivoSinCarpeta("/proc"), kSinArchivos);
}

}  // namespace
}  // namespace telvane
