// The whole job on a machine without a display.
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/apoyo/proceso.h"
#include "tests/e2e/datos_guardados.h"
#include "tests/e2e/registrador_simulado.h"

namespace telvane {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

struct Resultado {
    std::optional<int> estado;
    std::string salida;
    std::string errores;
};

class ConsolaE2e : public ::testing::Test {
   protected:
    Resultado orden(const std::vector<std::string>& argumentos) const {
        std::vector<std::string> todo{TELVANE_CLI, "--com", registrador_.com()};
        todo.insert(todo.end(), argumentos.begin(), argumentos.end());
        Proceso proceso(todo, {"LC_ALL=C.UTF-8"});
        const auto estado = proceso.terminar();
        return {estado, proceso.salida(), proceso.errores()};
    }

    RegistradorSimulado registrador_;
    CarpetaTemporal carpeta_;
};

TEST_F(ConsolaE2e, FindsTheLoggerReadsItShowsItLiveAndDownloadsIt) {
    const auto buscar = orden({"buscar"});
    ASSERT_EQ(buscar.estado, 0) << buscar.errores;
    EXPECT_THAT(buscar.salida, StartsWith("COM1"));

    const auto configuracion = orden({"configuracion"});
    ASSERT_EQ(configuracion.estado, 0) << configuracion.errores;
    EXPECT_THAT(configuracion.salida, HasSubstr("Nro  : 02080050"));
    EXPECT_THAT(configuracion.salida, HasSubstr("Ubicacion: Finca Norte"));

    const auto enLinea = orden({"en-linea", "--cuenta", "5"});
    ASSERT_EQ(enLinea.estado, 0) << enLinea.errores;
    std::size_t marcos = 0;
    for (auto i = enLinea.salida.find("[RH%]="); i != std::string::npos;
         i = enLinea.salida.find("[RH%]=", i + 1))
        ++marcos;
    EXPECT_EQ(marcos, 5U);

    const auto base = carpeta_ / "estacion.rgt";
    const auto tabla = carpeta_ / "estacion.csv";
    const auto descarga = orden({"descargar", "--base", base.string(), "--csv", tabla.string()});
    ASSERT_EQ(descarga.estado, 0) << descarga.errores;
    EXPECT_EQ(std::filesystem::file_size(base), kBytesArchivoBase);
    const auto csv = leerCsv(tabla);
    ASSERT_EQ(csv.muestras.size(), kMuestrasSimuladas);
    EXPECT_EQ(csv.muestras[(303 - 7) * 2], "14/12/2018,16:00:00,64,26.2,90,O,19,0.28,90.8,2.6,0.1");
    EXPECT_THAT(csv.columnas, testing::EndsWith("Eva parcial[mm]"));
    EXPECT_EQ(csv.resto, "\r\n");
}

TEST_F(ConsolaE2e, ABaseFileConvertsToTheSampleLinesOfItsDownload) {
    const auto base = carpeta_ / "a.rgt";
    ASSERT_EQ(orden({"descargar", "--base", base.string(), "--csv", (carpeta_ / "a.csv").string()}).estado,
              0);
    ASSERT_EQ(orden({"convertir", base.string(), (carpeta_ / "b.csv").string()}).estado, 0);
    EXPECT_EQ(leerCsv(carpeta_ / "a.csv").muestras, leerCsv(carpeta_ / "b.csv").muestras);
    EXPECT_EQ(leerCsv(carpeta_ / "b.csv").muestras.size(), kMuestrasSimuladas);
}

TEST_F(ConsolaE2e, ASerialNumberThatWasWrittenIsReadBack) {
    const auto escrito = orden({"serie", "20800512"});
    ASSERT_EQ(escrito.estado, 0) << escrito.errores;
    EXPECT_THAT(orden({"configuracion"}).salida, HasSubstr("Nro  : 20800512"));
}

TEST(ConsolaSinRegistrador, ADeviceThatDoesNotExistEndsWithNoLoggerAndTheRemedy) {
    Proceso proceso({TELVANE_CLI, "--com", "1=/dev/no-existe", "buscar"});
    EXPECT_EQ(proceso.terminar(), 3);
    EXPECT_THAT(proceso.errores(), HasSubstr("--com 1=DISPOSITIVO"));
}

}  // namespace
}  // namespace telvane
