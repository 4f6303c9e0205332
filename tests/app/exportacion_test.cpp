// The CSV export after a download, and the events and spreadsheet export.
#include <fstream>

#include <gmock/gmock.h>

#include "data/informe.h"
#include "platform/cp1252.h"
#include "tests/apoyo/leer_todo.h"
#include "tests/app/banco.h"

namespace telvane {
namespace {

using namespace std::chrono_literals;
using testing::Each;
using testing::HasSubstr;
using testing::Not;

class Exportar : public Banco {
   protected:
    explicit Exportar(Perfil perfil = Perfil::estricto) : Banco(0, perfil) {}

    void descargarHasta(std::optional<std::filesystem::path> ruta,
                        std::optional<Boton> abrir = std::nullopt) {
        dialogos.responder(Boton::aceptar, "La descarga de datos se realizó con exito");
        dialogos.responderArchivo(std::move(ruta));
        if (abrir) dialogos.responder(*abrir, "Desea Abrir Archivo");
        const auto pedidos = dialogos.archivos().size();
        pulsar(forma.Command13);
        ASSERT_TRUE(bucle.correrHasta(
            [&] { return dialogos.archivos().size() > pedidos && inicio.operacionesEnCurso() == 0; }));
    }
    static std::vector<std::string> enLineas(const std::string& texto) {
        std::vector<std::string> partes;
        for (std::size_t desde = 0; desde < texto.size();) {
            const auto fin = texto.find("\r\n", desde);
            partes.push_back(texto.substr(desde, fin - desde));
            if (fin == texto.npos) break;
            desde = fin + 2;
        }
        return partes;
    }
};

TEST_F(Exportar, WritesHeaderConfigurationColumnsAndSamplesInWindows1252) {
    conectar();
    const auto ruta = carpeta.ruta() / "datos.CSV";
    descargarHasta(ruta, Boton::no);
    const auto partes = enLineas(leerTodo(ruta));
    EXPECT_EQ(partes[0], " Equipo Registrador VELTRA ");
    EXPECT_EQ(partes[1], "proceso realizado el 20/11/2026  a las 10:00:04");
    EXPECT_EQ(partes[2], "");
    EXPECT_EQ(partes[3], "Datos de configuracion");
    EXPECT_EQ(partes[4], "Muestras cada 60 Minutos");
    EXPECT_EQ(partes[5], "Nro  : 02080050");
    EXPECT_TRUE(partes[6].starts_with("Usuario: "));
    EXPECT_EQ(partes[13],
              "Fecha,Hora,RH[%],Temp[\xBA"
              "C],Dir Viento [\xBA], Dir Viento (R) ,Vel Viento[km/h],Rad Solar [KW/m2],Pres. Atm "
              "[kPa],Plu parcial[mm],Eva parcial[mm]");
    EXPECT_TRUE(partes[14].starts_with("20/11/2018,00:00:00,"));
    EXPECT_EQ(partes.size(), 14u + 8178 + 1);
    EXPECT_EQ(partes.back(), "");
    EXPECT_EQ(cp1252DeUtf8(forma.RichTextBox1.text()), leerTodo(ruta));
    EXPECT_TRUE(forma.RichTextBox1.text().starts_with(forma.RichTextBox2.text()));
    EXPECT_TRUE(dialogos.documentos().empty()) << "No opens nothing";
    EXPECT_EQ(lineas().back(),
              "8178 muestras escritas, 2 registros vacios, 0 descartados por fecha u hora incorrecta");
}

TEST_F(Exportar, YesOpensTheSavedFile) {
    conectar();
    const auto ruta = carpeta.ruta() / "datos.CSV";
    descargarHasta(ruta, Boton::si);
    EXPECT_EQ(dialogos.documentos(), std::vector<std::filesystem::path>{ruta});
}

TEST_F(Exportar, ADesktopThatCannotOpenTheFileIsTold) {
    conectar();
    dialogos.elEscritorioAbre(false);
    const auto ruta = carpeta.ruta() / "datos.CSV";
    descargarHasta(ruta, Boton::si);
    EXPECT_EQ(forma.lineas().back(), "no se pudo abrir " + ruta.string());
}

TEST_F(Exportar, ProposesTheLocationAndTheDateAndKeepsThePathOut) {
    conectar();
    forma.Text3.text = "Finca/../Norte";
    bucle.reloj().ponerHora({2004, 3, 7, 9h});
    descargarHasta(std::nullopt);
    const auto& peticion = dialogos.archivos().back();
    EXPECT_TRUE(peticion.guardar);
    EXPECT_EQ(peticion.filtro, "datos excel (*.CSV)|*.CSV");
    EXPECT_EQ(peticion.carpeta, "C:\\Mis Documentos\\");
    EXPECT_EQ(peticion.nombre, "Finca_.._Norte 7_3_2004");
}

TEST_F(Exportar, ACancelledDialogWritesNothingAndAsksNothing) {
    conectar();
    descargarHasta(std::nullopt);
    EXPECT_TRUE(lineas().back().starts_with("archivo base: "))
        << "no sample was written: " << lineas().back();
    EXPECT_EQ(dialogos.textos().back(), "La descarga de datos se realizó con exito") << "no question follows";
    EXPECT_TRUE(dialogos.documentos().empty());
    for (const auto& entrada : std::filesystem::recursive_directory_iterator(carpeta.ruta())) {
        EXPECT_TRUE(entrada.is_directory() || entrada.path().extension() == ".rgt") << entrada.path();
    }
    EXPECT_TRUE(forma.Timer1.enabled());
    EXPECT_TRUE(forma.Command1.enabled());
    for (auto* boton :
         {&forma.Command43, &forma.Command13, &forma.Command2, &forma.configuracion, &forma.Command4}) {
        EXPECT_TRUE(boton->enabled()) << boton->nombre();
    }
    EXPECT_FALSE(forma.Command33.enabled());
    EXPECT_FALSE(forma.Command3.enabled());
    EXPECT_FALSE(inicio.progress.mostrado());
}

TEST_F(Exportar, AFailedSavePrintsTheReasonAndLeavesTheOldFile) {
    conectar();
    const auto ruta = carpeta.ruta() / "datos.CSV";
    std::ofstream(ruta) << "viejo";
    std::filesystem::create_directory(carpeta.ruta() / "carpeta.CSV");
    for (const auto& mala : {carpeta.ruta() / "carpeta.CSV", ruta / "datos.CSV"}) {
        descargarHasta(mala);
        EXPECT_TRUE(lineas().back().starts_with("no se pudo guardar " + mala.string() + ": "))
            << lineas().back();
        EXPECT_THAT(lineas(), Each(Not(HasSubstr("escritas"))));
        EXPECT_TRUE(forma.Command13.enabled());
        EXPECT_TRUE(dialogos.documentos().empty());
        EXPECT_EQ(leerTodo(ruta), "viejo");
    }
}

TEST_F(Exportar, OutsideTheEvaporationVariantThereAreTenColumns) {
    MaquinaRegistrador maquina(memoriaSimulada(Clima()));
    maquina.ponerSerie("02080100");
    conectar(1, maquina);
    const auto ruta = carpeta.ruta() / "datos.CSV";
    descargarHasta(ruta, Boton::no);
    const auto partes = enLineas(leerTodo(ruta));
    EXPECT_EQ(std::count(partes[13].begin(), partes[13].end(), ','), 9);
    EXPECT_EQ(std::count(partes[14].begin(), partes[14].end(), ','), 9);
}

TEST_F(Exportar, AMemoryWithoutSamplesStillHoldsHeaderColumnsAndTheFinalLine) {
    conectar(1, MaquinaRegistrador(std::vector<std::uint8_t>(262144, 0xFF)));
    const auto ruta = carpeta.ruta() / "datos.CSV";
    descargarHasta(ruta, Boton::no);
    const auto texto = leerTodo(ruta);
    EXPECT_TRUE(texto.ends_with("[mm]\r\n\r\n"));
    EXPECT_EQ(enLineas(texto).size(), 15u);
}

TEST_F(Exportar, TheSpreadsheetTextKeepsFourNamesOverTenFields) {
    conectar();
    descargarHasta(std::nullopt);
    dialogos.responderArchivo(carpeta.ruta() / "datos.xls");
    forma.Command33.enabled = true;
    pulsar(forma.Command33);
    const auto& peticion = dialogos.archivos().back();
    EXPECT_EQ(peticion.filtro, "datos excel (*.xls)|*.xls");
    EXPECT_EQ(peticion.nombre, "datos");
    const auto partes = enLineas(leerTodo(carpeta.ruta() / "datos.xls"));
    EXPECT_EQ(partes[0],
              "Fecha,Hora,Temperatura[\xBA"
              "C],Precipitacion[mm]");
    EXPECT_EQ(std::count(partes[1].begin(), partes[1].end(), ','), 10);
    EXPECT_EQ(partes.size(), 1u + 8178 + 1);
    EXPECT_EQ(dialogos.textos().back(), "La descarga de datos se realizó con exito") << "no question follows";
    const auto informe = enLineas(forma.RichTextBox2.text());
    EXPECT_EQ(informe[0], "Registro de eventos y configuracion de equipo registrador  ");
    EXPECT_EQ(informe[1], "proceso realizado el viernes, 20 de noviembre de 2026  a las 10:00:04");
    EXPECT_EQ(informe[3], "DATOS DE CONFIGURACION");
    EXPECT_EQ(informe.back(), "Eventos producidos:");
    EXPECT_FALSE(forma.Command33.enabled());
    EXPECT_TRUE(forma.Command13.enabled());
}

TEST_F(Exportar, TheReportIsShownWhetherOrNotTheFileIsSaved) {
    dialogos.responder(Boton::cancelar, kPregunta);
    inicio.cargar();
    dialogos.responderArchivo(std::nullopt);
    pulsar(forma.Command33);
    EXPECT_TRUE(forma.RichTextBox2.text().ends_with("Eventos producidos:\r\n"));
    EXPECT_EQ(cp1252DeUtf8(forma.RichTextBox1.text()),
              "Fecha,Hora,Temperatura[\xBA"
              "C],Precipitacion[mm]\r\n\r\n");
}

class ExportarAmpliado : public Exportar {
   protected:
    ExportarAmpliado() : Exportar(Perfil::ampliado) {}
};

TEST_F(ExportarAmpliado, SaysItsProfileOnceAndDecodesYearsAfter2019) {
    auto imagen = memoriaSimulada(Clima());
    for (std::size_t k = 448; k < imagen.size(); k += 32) imagen[k + 5] = 0x24;
    conectar(1, MaquinaRegistrador(imagen));
    const auto impresas = lineas();
    EXPECT_EQ(std::count(impresas.begin(), impresas.end(), "perfil ampliado"), 1);
    const auto ruta = carpeta.ruta() / "datos.CSV";
    descargarHasta(ruta, Boton::no);
    EXPECT_NE(leerTodo(ruta).find("20/11/2024,00:00:00,"), std::string::npos);
}

}  // namespace
}  // namespace telvane
