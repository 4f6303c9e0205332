// Our programs on a serial driver of the kernel: error counters, modem lines, a break, bytes that come in
// pieces.
#include <memory>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/e2e/registrador_simulado.h"
#include "tests/maquina/maquina_virtual.h"
#include "tests/maquina/puente.h"

namespace telvane {
namespace {

using testing::HasSubstr;

class EnUnPuerto16550 : public ::testing::Test {
   protected:
    void SetUp() override {
        if (const auto falta = MaquinaVirtual::queFalta(); !falta.empty()) {
            GTEST_SKIP() << "No hay máquina virtual: falta " << falta;
        }
    }

    const CarpetaTemporal carpeta_;
    const std::filesystem::path linea_ = carpeta_ / "linea";
};

TEST_F(EnUnPuerto16550, TheConsoleToolDoesItsWholeJob) {
    const RegistradorSimulado registrador;
    const Puente puente(registrador.enlace(), linea_);
    MaquinaVirtual maquina(
        {TELVANE_CLI},
        {"for o in puertos buscar configuracion 'en-linea --cuenta 2' 'descargar --base a.rgt'; do",
         "  telvane-cli --com 1=/dev/ttyS1 $o 2>errores; echo \"fin $o: $?\"", "done", "sha256sum a.rgt"},
        linea_);
    const auto dicho = maquina.resto();
    for (const auto* orden :
         {"puertos", "buscar", "configuracion", "en-linea --cuenta 2", "descargar --base a.rgt"}) {
        EXPECT_THAT(dicho, HasSubstr("fin " + std::string(orden) + ": 0\n"));
    }
    EXPECT_THAT(dicho, HasSubstr("COM1   /dev/ttyS1     libre\n"));
    EXPECT_THAT(dicho, HasSubstr("Nro  : 02080050\n"));
    EXPECT_THAT(dicho, HasSubstr(huella(registrador.archivo())));
    if (HasFailure()) std::fputs(dicho.c_str(), stderr);
}

TEST_F(EnUnPuerto16550, TheDriverTellsItsLinesItsCountsABreakAndWholeBlocks) {
    const RegistradorSimulado registrador({"--baudios", "19200"});
    const Puente puente(registrador.enlace(), linea_);
    MaquinaVirtual maquina({HUESPED}, {"huesped /dev/ttyS1"}, linea_);
    std::string dicho;
    while (const auto una = maquina.linea()) {
        dicho += *una + "\n";
        if (*una == "== se espera la parada") maquina.cortarLinea();
        if (una->find("== cerrado") == 0) break;
    }
    dicho += maquina.resto();
    // The lines stay low, as asked; the other side's are up. 1001: a break.
    EXPECT_THAT(dicho, HasSubstr("== abierto\n"
                                 "lineas: CTS DSR CD\n"
                                 "baja latencia=1\n"
                                 "lineas: DTR CTS DSR CD\n"
                                 "== cuadro\n"
                                 "entero=1\n"
                                 "al paso de la linea=1\n"
                                 "recibidos=31\n"
                                 "enviados=1\n"
                                 "sucesos=0\n"
                                 "== se espera la parada\n"
                                 "llego=1\n"
                                 "suceso=1001\n"
                                 "bytes=0\n"
                                 "== cerrado\n"
                                 "baja latencia=0\n"
                                 "== bloques\n"
                                 "todos=1\n"
                                 "fallo=0\n"));
}

}  // namespace
}  // namespace telvane
