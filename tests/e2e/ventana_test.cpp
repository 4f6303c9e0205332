// The main job in the real window, by accessible names alone: from the first question to the CSV.
#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>

#include <QCoreApplication>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "apoyo/proceso.h"
#include "tests/e2e/accesible.h"
#include "tests/e2e/datos_guardados.h"
#include "tests/e2e/escritorio.h"
#include "tests/e2e/registrador_simulado.h"
#include "tests/e2e/ventana_e2e.h"

namespace telvane {
namespace {

constexpr const char* kDescargar = "Importar datos desde equipo y exportar a excell (csv)";
constexpr const char* kImportarConfiguracion = "Importar Configuracion";

TEST_F(VentanaE2e, fromTheFirstQuestionToTheCsv) {
    ASSERT_TRUE(responder("Su Configuracion Regional no es la apropiada", "Aceptar"));
    ASSERT_TRUE(responder("Quiere conectarse con Registrador Veltra", "Aceptar"));
    ASSERT_TRUE(responder(" Conexion en COM 1  @ 19200 bps ", "Aceptar"));

    ASSERT_TRUE(habilitado("Cambiar configuracion"));
    ASSERT_TRUE(esperarA([&] {
        const auto usuario = raiz().buscar(kCampo, "Usuario");
        return usuario && empiezaPor(usuario->texto(), "INTA Estacion Experimental");
    }));
    ASSERT_TRUE(habilitado(kImportarConfiguracion));

    ASSERT_TRUE(pulsar(kDescargar));
    ASSERT_TRUE(responder("La descarga de datos se realizó con exito", "Aceptar"));
    const auto tabla = escritorio_.carpeta("casa") / "descarga.CSV";
    ASSERT_TRUE(guardarComo(tabla));
    ASSERT_TRUE(responder("Desea Abrir Archivo", "No"));
    ASSERT_TRUE(habilitado(kDescargar));

    const auto csv = leerCsv(tabla);
    EXPECT_EQ(csv.muestras.size(), kMuestrasSimuladas);
    ASSERT_EQ(archivosBase().size(), 1U);
    EXPECT_EQ(std::filesystem::file_size(archivosBase().front()), kBytesArchivoBase);

    ASSERT_TRUE(pulsar("Salir"));
    EXPECT_EQ(programa_->terminar(), 0);

    // The console tool, at the same logger, writes the same files.
    const auto base = escritorio_.carpeta("casa") / "consola.rgt";
    const auto otra = escritorio_.carpeta("casa") / "consola.csv";
    Proceso consola({TELVANE_CLI, "--com", registrador_.com(), "descargar", "--base", base.string(), "--csv",
                     otra.string()},
                    escritorio_.entorno());
    ASSERT_EQ(consola.terminar(), 0) << consola.errores();
    EXPECT_EQ(sinMomento(tabla), sinMomento(otra));
    EXPECT_EQ(contenidoDe(archivosBase().front()), contenidoDe(base));
}

}  // namespace
}  // namespace telvane

int main(int argc, char** argv) {
    ::testing::InitGoogleMock(&argc, argv);
    const QCoreApplication aplicacion(argc, argv);
    return RUN_ALL_TESTS();
}
