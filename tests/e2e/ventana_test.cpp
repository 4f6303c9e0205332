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
#include "tests/e2e/oyente.h"
#include "tests/e2e/registrador_simulado.h"

namespace telvane {
namespace {

constexpr const char* kBoton = "push button";
constexpr const char* kRotulo = "label";
constexpr const char* kCampo = "text";

constexpr const char* kDescargar = "Importar datos desde equipo y exportar a excell (csv)";
constexpr const char* kImportarConfiguracion = "Importar Configuracion";

class VentanaE2e : public ::testing::Test {
   protected:
    void SetUp() override {
        programa_ = std::make_unique<Proceso>(std::vector<std::string>{TELVANE, "--com", registrador_.com()},
                                              escritorio_.entorno());
        accesibilidad_ = std::make_unique<Accesibilidad>(escritorio_.bus());
    }

    void TearDown() override {
        if (!HasFailure()) return;
        ADD_FAILURE() << "telvane: " << programa_->errores() << "\n" << accesibilidad_->raiz().arbol();
    }

    Accesible raiz() const { return accesibilidad_->raiz(); }

    static bool empiezaPor(const std::string& texto, const std::string& comienzo) {
        return texto.compare(0, comienzo.size(), comienzo) == 0;
    }

    // The box with this text is on the screen: presses that button of it.
    ::testing::AssertionResult responder(const std::string& texto, const std::string& boton) {
        const auto pulsado = esperarA([&] {
            const auto caja = raiz().buscar([&](const Accesible& uno) {
                return uno.papel() == kRotulo && empiezaPor(uno.nombre(), texto);
            });
            const auto cual = caja ? raiz().buscar(kBoton, boton) : std::nullopt;
            return cual && cual->pulsar();
        });
        if (!pulsado) return ::testing::AssertionFailure() << "no box \"" << texto << "\" with " << boton;
        return ::testing::AssertionSuccess();
    }

    // The button can be pressed, and is.
    ::testing::AssertionResult pulsar(const std::string& nombre) {
        const auto pulsado = esperarA([&] {
            const auto boton = raiz().buscar(kBoton, nombre);
            return boton && boton->habilitado() && boton->pulsar();
        });
        if (!pulsado) return ::testing::AssertionFailure() << "no button " << nombre;
        return ::testing::AssertionSuccess();
    }

    ::testing::AssertionResult habilitado(const std::string& nombre) {
        const auto visto = esperarA([&] {
            const auto boton = raiz().buscar(kBoton, nombre);
            return boton && boton->habilitado();
        });
        if (!visto) return ::testing::AssertionFailure() << nombre << " stays disabled";
        return ::testing::AssertionSuccess();
    }

    // The file dialog is on the screen: gives it this file.
    ::testing::AssertionResult guardarComo(const std::filesystem::path& ruta) {
        const auto guardado = esperarA([&] {
            const auto dialogo = raiz().buscar(
                [](const Accesible& uno) { return empiezaPor(uno.nombre(), "Guardar archivo"); });
            const auto campo = dialogo ? dialogo->buscar(kCampo, "Nombre:") : std::nullopt;
            const auto boton = dialogo ? dialogo->buscar(kBoton, "Guardar") : std::nullopt;
            return campo && boton && campo->escribir(ruta.string()) && boton->pulsar();
        });
        if (!guardado) return ::testing::AssertionFailure() << "no file dialog";
        return ::testing::AssertionSuccess();
    }

    std::vector<std::filesystem::path> archivosBase() const {
        std::vector<std::filesystem::path> rutas;
        const auto carpeta = escritorio_.carpeta("datos") / "telvane";
        if (!std::filesystem::exists(carpeta)) return rutas;
        for (const auto& entrada : std::filesystem::directory_iterator(carpeta))
            rutas.push_back(entrada.path());
        return rutas;
    }

    RegistradorSimulado registrador_;
    Escritorio escritorio_;
    std::unique_ptr<Proceso> programa_;
    std::unique_ptr<Accesibilidad> accesibilidad_;
};

TEST_F(VentanaE2e, aScreenReaderHearsThePrintedLinesAndTheLiveReadings) {
    const Oyente oyente(accesibilidad_->bus());
    ASSERT_TRUE(responder("Su Configuracion Regional no es la apropiada", "Aceptar"));
    ASSERT_TRUE(responder("Quiere conectarse con Registrador Veltra", "Aceptar"));
    ASSERT_TRUE(responder(" Conexion en COM 1  @ 19200 bps ", "Aceptar"));
    EXPECT_TRUE(esperarA([&] { return oyente.oyo(" 31"); })) << ::testing::PrintToString(oyente.textos());
    ASSERT_TRUE(habilitado("Cambiar configuracion"));
    ASSERT_TRUE(pulsar("DATOS EN LINEA"));
    EXPECT_TRUE(esperarA([&] { return oyente.oyo("[RH%]="); })) << ::testing::PrintToString(oyente.textos());
    ASSERT_TRUE(pulsar("PARAR"));
}

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
