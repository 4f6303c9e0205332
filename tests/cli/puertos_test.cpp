// "puertos" says what to do about what keeps a port from being used.
#include <pty.h>
#include <sys/stat.h>

#include "tests/cli/cli_prueba.h"

namespace telvane {
namespace {

using testing::HasSubstr;
using testing::Not;

class PuertosTest : public CliPrueba {
   protected:
    PuertosTest() {
        for (const auto* nombre : {"dev", "sys", "proc"}) std::filesystem::create_directory(carpeta / nombre);
    }
    // A process of this machine, which anybody may see.
    void proceso(const std::string& pid, const std::string& nombre) {
        std::filesystem::create_directory(carpeta / "proc" / pid);
        std::ofstream(carpeta / "proc" / pid / "comm") << nombre << '\n';
    }
};

TEST_F(PuertosTest, WithoutAnyPortItAsksForTheAdapter) {
    const auto r = correr({"puertos"});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho);
    EXPECT_THAT(r.errores, HasSubstr("enchufe el adaptador"));
}

TEST_F(PuertosTest, AQuietMachineNeedsNoRemedy) {
    proceso("1", "init");
    proceso("71", "brltty-otro");
    int maestro = -1;
    int esclavo = -1;
    std::array<char, 128> nombre{};
    ASSERT_EQ(::openpty(&maestro, &esclavo, nombre.data(), nullptr, nullptr), 0);
    const auto r = correr({"puertos", "--com", std::string("1=") + nombre.data()});
    ::close(maestro);
    ::close(esclavo);
    EXPECT_THAT(r.salida, HasSubstr("libre"));
    EXPECT_EQ(r.errores, "");
}

TEST_F(PuertosTest, AServiceThatTakesAdaptersIsNamedOnceWithTheRemedy) {
    proceso("70", "ModemManager");
    proceso("71", "brltty");
    proceso("72", "brltty");
    std::filesystem::create_directory(carpeta / "proc" / "sys");
    const auto r = correr({"puertos"});
    EXPECT_THAT(r.errores, HasSubstr("sudo systemctl disable --now ModemManager"));
    const auto braille = r.errores.find("disable --now brltty");
    ASSERT_NE(braille, std::string::npos);
    EXPECT_EQ(r.errores.find("disable --now brltty", braille + 1), std::string::npos);
}

TEST_F(PuertosTest, RemediesDoNotMixWithTheResult) {
    proceso("70", "ModemManager");
    const auto r = correr({"puertos", "--json"});
    EXPECT_THAT(r.salida, Not(HasSubstr("ModemManager")));
    EXPECT_THAT(r.errores, HasSubstr("ModemManager"));
}

TEST_F(PuertosTest, WithoutPermissionTheOrderToJoinTheGroupIsGiven) {
    if (::geteuid() != 0) GTEST_SKIP() << "only the superuser can stop being the device's owner";
    int maestro = -1;
    int esclavo = -1;
    std::array<char, 128> nombre{};
    ASSERT_EQ(::openpty(&maestro, &esclavo, nombre.data(), nullptr, nullptr), 0);
    constexpr gid_t kDialout = 20;
    ASSERT_EQ(::chown(nombre.data(), 0, kDialout), 0);
    ASSERT_EQ(::chmod(nombre.data(), 0660), 0);
    ASSERT_EQ(::seteuid(65534), 0);
    const auto r = correr({"puertos", "--com", std::string("1=") + nombre.data()});
    ASSERT_EQ(::seteuid(0), 0);
    ::close(maestro);
    ::close(esclavo);
    EXPECT_THAT(r.errores, HasSubstr("sudo adduser \"$USER\" dialout"));
}

}  // namespace
}  // namespace telvane
