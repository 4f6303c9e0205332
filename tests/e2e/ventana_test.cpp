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
        accesibilidad_ = std::make_unique<Accesibilidad>(escritorio_.bus());
        programa_ = std::make_unique<Proceso>(std::vector<std::string>{TELVANE, "--com", registrador_.com()},
                                              escritorio_.entorno());
    }

    void TearDown() override {
        if (!HasFailure()) return;
        const auto lineas = raiz().buscar(kCampo, "Diagnostico");
        ADD_FAILURE() << "telvane: " << programa_->errores() << "\n"
                      << (lineas ? lineas->texto() : "") << accesibilidad_->raiz().arbol();
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

    // The file dialog with this verb is on the screen: gives it this file.
    ::testing::AssertionResult elegir(const std::string& verbo, const std::filesystem::path& ruta) {
        const auto guardado = esperarA([&] {
            const auto dialogo = raiz().buscar(
                [&](const Accesible& uno) { return empiezaPor(uno.nombre(), verbo + " archivo"); });
            const auto campo = dialogo ? dialogo->buscar(kCampo, "Nombre:") : std::nullopt;
            const auto boton = dialogo ? dialogo->buscar(kBoton, verbo) : std::nullopt;
            return campo && boton && campo->escribir(ruta.string()) && boton->pulsar();
        });
        if (!guardado) return ::testing::AssertionFailure() << "no file dialog";
        return ::testing::AssertionSuccess();
    }

    void conectar() {
        ASSERT_TRUE(responder("Su Configuracion Regional no es la apropiada", "Aceptar"));
        ASSERT_TRUE(responder("Quiere conectarse con Registrador Veltra", "Aceptar"));
        ASSERT_TRUE(responder(" Conexion en COM 1  @ 19200 bps ", "Aceptar"));
        // The date is the last thing that a configuration read fills in.
        ASSERT_TRUE(contiene("Fecha", "/20"));
        ASSERT_TRUE(habilitado("Cambiar configuracion"));
        ASSERT_TRUE(habilitado(kImportarConfiguracion));
    }

    ::testing::AssertionResult contiene(const std::string& campo, const std::string& texto) {
        std::string visto;
        const auto esta = esperarA([&] {
            const auto cual = raiz().buscar(kCampo, campo);
            if (cual) visto = cual->texto();
            return visto.find(texto) != std::string::npos;
        });
        if (!esta) return ::testing::AssertionFailure() << campo << " holds \"" << visto << '"';
        return ::testing::AssertionSuccess();
    }

    ::testing::AssertionResult seLee(const std::string& rotulo) {
        if (esperarA([&] { return raiz().buscar(kRotulo, rotulo).has_value(); }))
            return ::testing::AssertionSuccess();
        return ::testing::AssertionFailure() << "no label \"" << rotulo << '"';
    }

    // Types into a field with the keyboard, in the place of what it holds.
    ::testing::AssertionResult teclear(const std::string& campo, const std::string& texto,
                                       const std::vector<std::string>& despues = {}) {
        // No window manager gives the window the keyboard here.
        Proceso teclado(
            {PROGRAMA_XDOTOOL, "search", "--name", "Telvane de VELTRA", "windowfocus", "--sync", "%1"},
            escritorio_.entorno());
        if (teclado.terminar() != 0) return ::testing::AssertionFailure() << teclado.errores();
        std::optional<Accesible> cual;
        const auto hallado = esperarA([&] {
            cual = raiz().buscar(kCampo, campo);
            return cual && cual->habilitado();
        });
        const auto enfocado = hallado && cual->enfocar() && esperarA([&] { return cual->enfocado(); });
        if (!enfocado) return ::testing::AssertionFailure() << "no field " << campo;
        std::vector<std::string> orden = {PROGRAMA_XDOTOOL, "key", "--clearmodifiers", "ctrl+a"};
        Proceso todo(orden, escritorio_.entorno());
        if (todo.terminar() != 0) return ::testing::AssertionFailure() << todo.errores();
        Proceso letras({PROGRAMA_XDOTOOL, "type", "--delay", "5", texto}, escritorio_.entorno());
        if (letras.terminar() != 0) return ::testing::AssertionFailure() << letras.errores();
        for (const auto& tecla : despues) {
            Proceso una({PROGRAMA_XDOTOOL, "key", tecla}, escritorio_.entorno());
            if (una.terminar() != 0) return ::testing::AssertionFailure() << una.errores();
        }
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
    conectar();
    EXPECT_TRUE(esperarA([&] { return oyente.oyo(" 31"); })) << ::testing::PrintToString(oyente.textos());
    ASSERT_TRUE(pulsar("DATOS EN LINEA"));
    EXPECT_TRUE(esperarA([&] { return oyente.oyo("[RH%]="); })) << ::testing::PrintToString(oyente.textos());
    ASSERT_TRUE(pulsar("PARAR"));
}

TEST_F(VentanaE2e, fromTheFirstQuestionToTheCsv) {
    conectar();
    ASSERT_TRUE(contiene("Usuario", "INTA Estacion Experimental"));

    ASSERT_TRUE(pulsar(kDescargar));
    ASSERT_TRUE(responder("La descarga de datos se realizó con exito", "Aceptar"));
    const auto tabla = escritorio_.carpeta("casa") / "descarga.CSV";
    ASSERT_TRUE(elegir("Guardar", tabla));
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

TEST_F(VentanaE2e, whatIsEditedAndSentIsReadBack) {
    conectar();
    ASSERT_TRUE(contiene("Usuario", "INTA Estacion Experimental"));
    ASSERT_TRUE(pulsar("Cambiar configuracion"));
    ASSERT_TRUE(habilitado("Enviar configuracion"));
    ASSERT_TRUE(teclear("Usuario", "Ana Perez"));
    ASSERT_TRUE(teclear("Altitud", "1234"));
    ASSERT_TRUE(esperarA([&] {
        const auto opcion = raiz().buscar("radio button", "30 Minutos");
        return opcion && opcion->pulsar();
    }));
    ASSERT_TRUE(pulsar("Enviar configuracion"));
    ASSERT_TRUE(responder("SE BORRARAN TODOS LOS DATOS DE MEMORIA!", "Aceptar"));
    ASSERT_TRUE(esperarA([&] { return registrador_.memoria().find("Ana Perez") != std::string::npos; }));
    ASSERT_TRUE(habilitado(kImportarConfiguracion));
    ASSERT_TRUE(pulsar(kImportarConfiguracion));
    // The read starts with empty fields and pads what it got.
    EXPECT_TRUE(contiene("Usuario", std::string(21, ' ') + "Ana Perez"));
    EXPECT_TRUE(contiene("Altitud", " 1234"));
    EXPECT_TRUE(esperarA([&] { return raiz().buscar("radio button", "30 Minutos").has_value(); }));
    EXPECT_FALSE(raiz().buscar("radio button", "60 Minutos").has_value());
}

TEST_F(VentanaE2e, aSerialNumberThatIsWrittenIsReadBack) {
    conectar();
    ASSERT_TRUE(seLee("Nro  : 02080050"));
    ASSERT_TRUE(teclear("Nro de Serie", "x1234-5678", {"Return"}));
    ASSERT_TRUE(seLee("Nº Enviado  12345678"));
    ASSERT_TRUE(pulsar(kImportarConfiguracion));
    EXPECT_TRUE(seLee("Nro  : 12345678"));
}

TEST_F(VentanaE2e, aKeptBaseFileGivesTheSamplesOfItsDownload) {
    conectar();
    ASSERT_TRUE(pulsar(kDescargar));
    ASSERT_TRUE(responder("La descarga de datos se realizó con exito", "Aceptar"));
    const auto tabla = escritorio_.carpeta("casa") / "descarga.CSV";
    ASSERT_TRUE(elegir("Guardar", tabla));
    ASSERT_TRUE(responder("Desea Abrir Archivo", "No"));
    ASSERT_TRUE(habilitado("Abrir Archivo Base (.rgt)"));

    ASSERT_EQ(archivosBase().size(), 1U);
    ASSERT_TRUE(pulsar("Abrir Archivo Base (.rgt)"));
    ASSERT_TRUE(elegir("Abrir", archivosBase().front()));
    ASSERT_TRUE(responder("El archivo se proceso con exito", "Aceptar"));
    ASSERT_TRUE(pulsar("Exportar Eventos (.txt) y Base de Datos (.xls)"));
    const auto planilla = escritorio_.carpeta("casa") / "datos.xls";
    ASSERT_TRUE(elegir("Guardar", planilla));
    ASSERT_TRUE(esperarA([&] { return std::filesystem::exists(planilla); }));
    EXPECT_EQ(leerCsv(planilla).muestras, leerCsv(tabla).muestras);
    EXPECT_EQ(leerCsv(planilla).muestras.size(), kMuestrasSimuladas);
}

}  // namespace
}  // namespace telvane

int main(int argc, char** argv) {
    ::testing::InitGoogleMock(&argc, argv);
    const QCoreApplication aplicacion(argc, argv);
    return RUN_ALL_TESTS();
}
