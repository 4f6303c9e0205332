// The main job in the real window, by accessible names alone: from the first question to the CSV.
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/apoyo/leer_todo.h"
#include "tests/apoyo/proceso.h"
#include "tests/e2e/accesible.h"
#include "tests/e2e/datos_guardados.h"
#include "tests/e2e/escritorio.h"
#include "tests/e2e/oyente.h"
#include "tests/e2e/registrador_simulado.h"
#include "tests/e2e/ventana_e2e.h"

namespace telvane {
namespace {

// A logger that falls silent in the middle of its memory.
class DescargaDetenidaE2e : public VentanaE2e {
   protected:
    DescargaDetenidaE2e() : VentanaE2e({"--baudios", "0", "--fallo", "descarga:bloque=2047:silencio"}) {}
};

TEST_F(VentanaE2e, AScreenReaderHearsThePrintedLinesAndTheLiveReadings) {
    const Oyente oyente(accesibilidad_->bus());
    conectar();
    EXPECT_TRUE(esperarA([&] { return oyente.oyo(" 31"); })) << ::testing::PrintToString(oyente.textos());
    ASSERT_TRUE(pulsar("DATOS EN LINEA"));
    EXPECT_TRUE(esperarA([&] { return oyente.oyo("[RH%]="); })) << ::testing::PrintToString(oyente.textos());
    ASSERT_TRUE(pulsar("PARAR"));
}

TEST_F(DescargaDetenidaE2e, TheBarTellsHowFarItCameAndItsBounds) {
    conectar();
    ASSERT_TRUE(pulsar(kDescargar));
    std::optional<ValorAccesible> valor;
    EXPECT_TRUE(esperarA([&] {
        const auto barra = raiz().buscar([](const Accesible& uno) { return uno.papel() == "progress bar"; });
        valor = barra ? barra->valor() : std::nullopt;
        return valor && valor->actual == 2047;
    })) << (valor ? valor->actual : -1);
    ASSERT_TRUE(valor);
    EXPECT_EQ(valor->minimo, 0);
    EXPECT_EQ(valor->maximo, 4098);
}

TEST_F(VentanaE2e, FromTheFirstQuestionToTheCsv) {
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
    EXPECT_EQ(leerTodo(archivosBase().front()), leerTodo(base));
}

TEST_F(VentanaE2e, WhatIsEditedAndSentIsReadBack) {
    conectar();
    ASSERT_TRUE(contiene("Usuario", "INTA Estacion Experimental"));
    ASSERT_TRUE(pulsar("Cambiar configuracion"));
    ASSERT_TRUE(habilitado("Enviar configuracion"));
    ASSERT_TRUE(teclear("Usuario", "Ana Perez"));
    ASSERT_TRUE(teclear("Altitud", "1234"));
    // The time by its keys, the date as assistive technology writes it.
    ASSERT_TRUE(teclear("Hora", "102030", {"Tab"}));
    ASSERT_TRUE(contiene("Hora", "10:20:30"));
    const auto fecha = raiz().buscar(kCampo, "Fecha");
    ASSERT_TRUE(fecha && fecha->escribir("09/07/2031"));
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
    EXPECT_TRUE(contiene("Fecha", "09/07/2031"));
    // The logger's clock has gone on since.
    EXPECT_TRUE(contiene("Hora", "10:2"));
    EXPECT_TRUE(esperarA([&] { return raiz().buscar("radio button", "30 Minutos").has_value(); }));
    EXPECT_FALSE(raiz().buscar("radio button", "60 Minutos").has_value());
}

TEST_F(VentanaE2e, ASerialNumberThatIsWrittenIsReadBack) {
    conectar();
    ASSERT_TRUE(seLee("Nro  : 02080050"));
    ASSERT_TRUE(teclear("Nro de Serie", "x1234-5678", {"Return"}));
    ASSERT_TRUE(seLee("Nº Enviado  12345678"));
    ASSERT_TRUE(pulsar(kImportarConfiguracion));
    EXPECT_TRUE(seLee("Nro  : 12345678"));
}

TEST_F(VentanaE2e, AKeptBaseFileGivesTheSamplesOfItsDownload) {
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
    ASSERT_TRUE(pulsar(kExportar));
    const auto planilla = escritorio_.carpeta("casa") / "datos.xls";
    ASSERT_TRUE(elegir("Guardar", planilla));
    ASSERT_TRUE(esperarA([&] { return std::filesystem::exists(planilla); }));
    EXPECT_EQ(leerCsv(planilla).muestras, leerCsv(tabla).muestras);
    EXPECT_EQ(leerCsv(planilla).muestras.size(), kMuestrasSimuladas);
}

}  // namespace
}  // namespace telvane
