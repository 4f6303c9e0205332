#include "link/mapa_com.h"

#include <stdlib.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <fstream>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/apoyo/carpeta_temporal.h"
#include "tests/link/pty_prueba.h"

namespace telvane {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// A machine of our own: folders that look like the system's.
class Maquina : public testing::Test {
   protected:
    Maquina() {
        for (const auto& carpeta : {raices().dev, raices().sys, raices().proc})
            fs::create_directories(carpeta);
    }

    RaicesSistema raices() const { return {raiz / "dev", raiz / "sys", raiz / "proc"}; }
    void archivo(const fs::path& ruta, const std::string& texto = "") const {
        fs::create_directories((raiz / ruta).parent_path());
        std::ofstream(raiz / ruta) << texto;
    }
    void dispositivo(const std::string& nombre) const { archivo(fs::path("dev") / nombre); }
    void enPlaca(const std::string& nombre, const std::string& tipo) const {
        dispositivo(nombre);
        archivo(fs::path("sys/class/tty") / nombre / "type", tipo + "\n");
    }
    void quitar(const std::string& nombre) const { fs::remove(raices().dev / nombre); }
    std::vector<std::string> presentes() const {
        std::vector<std::string> nombres;
        for (const auto& ruta : dispositivosPresentes(raices())) nombres.push_back(ruta.filename().string());
        return nombres;
    }
    static std::string nombre(const MapaCom& mapa, int numero) {
        const auto ruta = mapa.dispositivo(numero);
        return ruta ? ruta->filename().string() : "none";
    }

    CarpetaTemporal temporal;
    fs::path raiz = temporal.ruta();
};

TEST_F(Maquina, AdaptersComeInNaturalOrderBeforePortsOnBoard) {
    for (const auto* nombre : {"ttyUSB10", "ttyUSB2", "ttyACM1", "ttyUSB0"}) dispositivo(nombre);
    enPlaca("ttyS1", "4");
    enPlaca("ttyS0", "4");
    EXPECT_THAT(presentes(), ElementsAre("ttyUSB0", "ttyACM1", "ttyUSB2", "ttyUSB10", "ttyS0", "ttyS1"));
}

TEST_F(Maquina, APortOnBoardWithoutAChipIsNotThere) {
    enPlaca("ttyS0", "4");
    enPlaca("ttyS1", "0");
    dispositivo("ttyS2");  // no word about it in the system's lists
    EXPECT_THAT(presentes(), ElementsAre("ttyS0"));
}

TEST_F(Maquina, WhereTheChipIsNotToldTheDriverTells) {
    for (const auto* nombre : {"ttyS0", "ttyS1"}) {
        dispositivo(nombre);
        fs::create_directories(raices().sys / "class/tty" / nombre / "device");
    }
    fs::create_symlink("../../../../bus/platform/drivers/serial8250",
                       raices().sys / "class/tty/ttyS0/device/driver");
    fs::create_symlink("../../../../bus/pnp/drivers/serial", raices().sys / "class/tty/ttyS1/device/driver");
    EXPECT_THAT(presentes(), ElementsAre("ttyS1"));
}

TEST_F(Maquina, OtherTerminalsAreNoPorts) {
    for (const auto* nombre :
         {"tty", "tty0", "ttyUSB", "ttyUSBx", "ttyUSB1x", "ttyprintk", "console", "xttyUSB0"}) {
        dispositivo(nombre);
    }
    EXPECT_THAT(presentes(), IsEmpty());
    EXPECT_THAT(MapaCom::automatico(raices()).numeros(), IsEmpty());
}

TEST_F(Maquina, AMachineWithoutThoseFoldersHasNoPorts) {
    EXPECT_THAT(dispositivosPresentes({raiz / "no", raiz / "no", raiz / "no"}), IsEmpty());
}

TEST_F(Maquina, NumbersStartAtOneAndEndAtTwelve) {
    for (int i = 0; i < 14; ++i) dispositivo("ttyUSB" + std::to_string(i));
    const auto mapa = MapaCom::automatico(raices());
    EXPECT_THAT(mapa.numeros(), ElementsAre(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12));
    EXPECT_EQ(nombre(mapa, 1), "ttyUSB0");
    EXPECT_EQ(nombre(mapa, 12), "ttyUSB11");
    EXPECT_EQ(nombre(mapa, 13), "none");
}

TEST_F(Maquina, AnAdapterThatComesLaterGetsTheNextNumber) {
    enPlaca("ttyS0", "4");
    auto mapa = MapaCom::automatico(raices());
    dispositivo("ttyUSB0");
    EXPECT_EQ(nombre(mapa, 2), "none");
    mapa.actualizar();
    EXPECT_EQ(nombre(mapa, 1), "ttyS0");
    EXPECT_EQ(nombre(mapa, 2), "ttyUSB0");
}

TEST_F(Maquina, AnAdapterThatComesBackUnderAnotherNameIsWhereItWas) {
    dispositivo("ttyUSB0");
    enPlaca("ttyS0", "4");
    auto mapa = MapaCom::automatico(raices());
    quitar("ttyUSB0");
    mapa.actualizar();
    EXPECT_EQ(nombre(mapa, 1), "ttyUSB0");
    dispositivo("ttyUSB1");
    mapa.actualizar();
    EXPECT_EQ(nombre(mapa, 1), "ttyUSB1");
    EXPECT_EQ(nombre(mapa, 2), "ttyS0");
}

TEST(MapaComFijo, OnlyTheGivenNumbersExist) {
    auto mapa = MapaCom::fijo({"3=/dev/ttyUSB7", "12=/dev/serial/by-id/usb-a=b"});
    EXPECT_THAT(mapa.numeros(), ElementsAre(3, 12));
    EXPECT_EQ(mapa.dispositivo(3), "/dev/ttyUSB7");
    EXPECT_EQ(mapa.dispositivo(12), "/dev/serial/by-id/usb-a=b");
    EXPECT_EQ(mapa.dispositivo(1), std::nullopt);
    mapa.actualizar();
    EXPECT_THAT(mapa.numeros(), ElementsAre(3, 12));
}

class ParRehusado : public testing::TestWithParam<std::vector<std::string>> {};

TEST_P(ParRehusado, IsNamedInTheError) {
    try {
        MapaCom::fijo(GetParam());
        FAIL() << "accepted";
    } catch (const ErrorPuerto& error) {
        EXPECT_EQ(error.motivo(), MotivoPuerto::lineaInvalida);
        EXPECT_THAT(error.what(), HasSubstr("--com " + GetParam().back() + ": "));
    }
}

using Pares = std::vector<std::string>;
INSTANTIATE_TEST_SUITE_P(Disparates, ParRehusado,
                         testing::Values(Pares{"/dev/ttyUSB0"}, Pares{""}, Pares{"=/dev/ttyUSB0"},
                                         Pares{"1="}, Pares{"0=/dev/a"}, Pares{"17=/dev/a"},
                                         Pares{"-1=/dev/a"}, Pares{"1x=/dev/a"}, Pares{" 1=/dev/a"},
                                         Pares{"COM1=/dev/a"}, Pares{"99999999999=/dev/a"},
                                         Pares{"1=/dev/a", "1=/dev/b"}));

using Ficha = Maquina;

TEST_F(Ficha, ADeviceThatIsNotThereIsAbsent) {
    EXPECT_EQ(describirPuerto(raices().dev / "ttyUSB0", raices()).estado, EstadoPuerto::ausente);
    dispositivo("ttyUSB0");  // a plain file is no device either
    EXPECT_EQ(describirPuerto(raices().dev / "ttyUSB0", raices()).estado, EstadoPuerto::ausente);
}

TEST_F(Ficha, AFreePortHasNoHolder) {
    const PtyPrueba pty;
    const auto ficha = describirPuerto(pty.ruta(), raices());
    EXPECT_EQ(ficha.estado, EstadoPuerto::libre);
    EXPECT_THAT(ficha.ocupantes, IsEmpty());
    EXPECT_EQ(ficha.nombreEstable, "");
    EXPECT_EQ(ficha.producto, "");
}

TEST_F(Ficha, WhoHasItOpenIsNamed) {
    const PtyPrueba pty;
    const auto ficha = describirPuerto(pty.ruta());
    EXPECT_EQ(ficha.estado, EstadoPuerto::ocupado);
    ASSERT_EQ(ficha.ocupantes.size(), 1U);
    EXPECT_EQ(ficha.ocupantes[0].pid, ::getpid());
    std::string propio;
    std::getline(std::ifstream("/proc/self/comm"), propio);
    EXPECT_EQ(ficha.ocupantes[0].nombre, propio);
}

TEST_F(Ficha, SomebodyElsesLockIsSeenWithoutHisDescriptors) {
    const PtyPrueba pty;
    struct stat datos {};
    ASSERT_EQ(::stat(pty.ruta().c_str(), &datos), 0);
    archivo("proc/77/comm", "intruso\n");
    archivo("proc/locks", fmt::format("1: POSIX  ADVISORY  WRITE 5 08:01:1234 0 EOF\n"
                                      "2: FLOCK  ADVISORY  WRITE 77 {:02x}:{:02x}:{} 0 EOF\n",
                                      major(datos.st_dev), minor(datos.st_dev), datos.st_ino));
    const auto ficha = describirPuerto(pty.ruta(), raices());
    EXPECT_EQ(ficha.estado, EstadoPuerto::ocupado);
    EXPECT_THAT(ficha.ocupantes, ElementsAre(Ocupante{77, "intruso"}));
}

TEST_F(Ficha, TheAdapterTellsItsNamesWhereverTheyStandAboveThePort) {
    const PtyPrueba pty;
    const auto usb = raiz / "sys/devices/usb1/1-2";
    fs::create_directories(usb / "1-2:1.0/ttyUSB0");
    archivo("sys/devices/usb1/1-2/idVendor", "0403\n");
    archivo("sys/devices/usb1/1-2/product", "Serial Cable \n");
    archivo("sys/devices/usb1/1-2/manufacturer", "Somebody\n");
    archivo("sys/devices/usb1/1-2/serial", "A1B2\n");
    const auto clase = raices().sys / "class/tty" / pty.ruta().filename();
    fs::create_directories(clase);
    fs::create_symlink(usb / "1-2:1.0/ttyUSB0", clase / "device");
    fs::create_directories(raices().dev / "serial/by-id");
    fs::create_symlink("/dev/null", raices().dev / "serial/by-id/another");
    fs::create_symlink(pty.ruta(), raices().dev / "serial/by-id/usb-Somebody_A1B2");
    // Reached through a link, as the user may give it.
    fs::create_symlink(pty.ruta(), raices().dev / "ttyUSB0");

    const auto ficha = describirPuerto(raices().dev / "ttyUSB0", raices());
    EXPECT_EQ(ficha.estado, EstadoPuerto::libre);
    EXPECT_EQ(ficha.producto, "Serial Cable");
    EXPECT_EQ(ficha.fabricante, "Somebody");
    EXPECT_EQ(ficha.serie, "A1B2");
    EXPECT_EQ(ficha.nombreEstable, raices().dev / "serial/by-id/usb-Somebody_A1B2");
}

TEST_F(Ficha, WithoutPermissionTheGroupIsNamed) {
    constexpr uid_t kNadie = 65534;
    constexpr gid_t kGrupo = 20;
    const PtyPrueba pty;
    ASSERT_EQ(::chmod(pty.ruta().c_str(), 0), 0);
    EXPECT_EQ(grupoConPermiso(pty.ruta()), "");
    ASSERT_EQ(::chmod(pty.ruta().c_str(), 0660), 0);
    EXPECT_NE(grupoConPermiso(pty.ruta()), "");
    if (::geteuid() != 0) GTEST_SKIP() << "only the superuser can stop being the device's owner";
    ASSERT_EQ(::chown(pty.ruta().c_str(), 0, kGrupo), 0);
    ASSERT_EQ(::seteuid(kNadie), 0);
    const auto ficha = describirPuerto(pty.ruta());
    ASSERT_EQ(::seteuid(0), 0);
    EXPECT_EQ(ficha.estado, EstadoPuerto::sinPermiso);
    EXPECT_EQ(ficha.grupo, grupoConPermiso(pty.ruta()));
}

}  // namespace
}  // namespace telvane
