#include "data/informe.h"

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/cp1252.h"
#include "tests/data/registro_prueba.h"

namespace telvane {
namespace {

using namespace std::chrono_literals;
using ::testing::EndsWith;
using ::testing::StartsWith;

const FechaHora kMomento{2004, 3, 7, 9h + 5min + 2s + 900ms};
constexpr std::string_view kConfig = "Muestras cada 10 Minutos\r\nUbicacion: Peñón\r\n";

TEST(EncabezadoCsv, HasTitleMomentAnEmptyLineAndTheConfiguration) {
    EXPECT_EQ(encabezadoCsv(kMomento, kConfig),
              " Equipo Registrador VELTRA \r\n"
              "proceso realizado el 07/03/2004  a las 09:05:02\r\n"
              "\r\n"
              "Datos de configuracion\r\n"
              "Muestras cada 10 Minutos\r\nUbicacion: Peñón\r\n");
}

TEST(Columnas, AreTenAndElevenWithEvaporation) {
    EXPECT_EQ(columnasCsv(false),
              "Fecha,Hora,RH[%],Temp[ºC],Dir Viento [º], Dir Viento (R) ,Vel Viento[km/h],Rad Solar [KW/m2],"
              "Pres. Atm [kPa],Plu parcial[mm]\r\n");
    EXPECT_EQ(columnasCsv(true),
              "Fecha,Hora,RH[%],Temp[ºC],Dir Viento [º], Dir Viento (R) ,Vel Viento[km/h],Rad Solar [KW/m2],"
              "Pres. Atm [kPa],Plu parcial[mm],Eva parcial[mm]\r\n");
}

TEST(Columnas, TheSpreadsheetsNameFour) {
    EXPECT_EQ(columnasXls(), "Fecha,Hora,Temperatura[ºC],Precipitacion[mm]\r\n");
}

TEST(InformeEventos, HasTheLongDateTheConfigurationAndNoEvent) {
    EXPECT_EQ(informeEventos(kMomento, kConfig),
              "Registro de eventos y configuracion de equipo registrador  \r\n"
              "proceso realizado el domingo, 7 de marzo de 2004  a las 09:05:02\r\n"
              "\r\n"
              "DATOS DE CONFIGURACION\r\n"
              "Muestras cada 10 Minutos\r\nUbicacion: Peñón\r\n"
              "\r\n\r\n"
              "Eventos producidos:\r\n");
}

TEST(NombreCsv, IsTheLocationWithoutOuterBlanksAndTheDateWithoutZeros) {
    EXPECT_EQ(nombreCsv("Finca Norte", kMomento), "Finca Norte 7_3_2004");
    EXPECT_EQ(nombreCsv("  Finca Norte                        ", kMomento), "Finca Norte 7_3_2004");
    EXPECT_EQ(nombreCsv("Peñón", kMomento), "Peñón 7_3_2004");
}

TEST(NombreCsv, TheLocationChoosesNoFolder) {
    EXPECT_EQ(nombreCsv("../../etc/passwd", kMomento), "_._.._etc_passwd 7_3_2004");
    EXPECT_EQ(nombreCsv("/", kMomento), "_ 7_3_2004");
}

TEST(NombreCsv, NeitherNulNorControlsStay) {
    EXPECT_EQ(nombreCsv(std::string_view("a\0b\r\n\x7F"
                                         "c",
                                         7),
                        kMomento),
              "a_b___c 7_3_2004");
    EXPECT_EQ(nombreCsv("a\xC2\x81"
                        "b\xC2\x9F",
                        kMomento),
              "a_b_ 7_3_2004")
        << "control characters above 0x7F";
    EXPECT_EQ(nombreCsv("a\xC2", kMomento), "a\xC2 7_3_2004");
}

TEST(NombreCsv, WhatADialogOrAFileSystemTakesForMoreDoesNotStay) {
    EXPECT_EQ(nombreCsv("Finca \"Norte\"", kMomento), "Finca _Norte_ 7_3_2004");
    EXPECT_EQ(nombreCsv("6\" pozo", kMomento), "6_ pozo 7_3_2004");
    EXPECT_EQ(nombreCsv("~nobody", kMomento), "_nobody 7_3_2004");
    EXPECT_EQ(nombreCsv("  ~", kMomento), "_ 7_3_2004");
    EXPECT_EQ(nombreCsv("-rf", kMomento), "_rf 7_3_2004");
    EXPECT_EQ(nombreCsv(".oculta", kMomento), "_oculta 7_3_2004");
    EXPECT_EQ(nombreCsv("..", kMomento), "_. 7_3_2004");
    EXPECT_EQ(nombreCsv("C:\\datos*?<a>|b", kMomento), "C__datos___a__b 7_3_2004");
    EXPECT_EQ(nombreCsv("$HOME `ls`", kMomento), "_HOME _ls_ 7_3_2004");
    EXPECT_EQ(nombreCsv("Pozo ~ 3. - d'Or (n#1) 50%", kMomento), "Pozo ~ 3. - d'Or (n#1) 50% 7_3_2004")
        << "what means nothing there stays";
}

TEST(NombreCsv, WithoutALocationTheDateStaysAndAHardBlankIsABlank) {
    EXPECT_EQ(nombreCsv("", kMomento), "7_3_2004");
    EXPECT_EQ(nombreCsv("     ", kMomento), "7_3_2004");
    EXPECT_EQ(nombreCsv("\u00A0 Finca\u00A0Norte \u00A0", kMomento), "Finca\u00A0Norte 7_3_2004");
}

TEST(NombreCsv, NoByteOfTheLoggerLeavesASlashOrAControl) {
    for (unsigned byte = 0; byte < 256; ++byte) {
        const std::array<std::uint8_t, 3> crudo = {'a', static_cast<std::uint8_t>(byte), 'b'};
        const auto nombre = cp1252DeUtf8(nombreCsv(utf8DeCp1252(crudo), kMomento));
        ASSERT_EQ(nombre.size(), 3u + 9u) << byte;
        const auto c = static_cast<unsigned char>(nombre[1]);
        EXPECT_TRUE(c >= 0x20 && c != 0x7F && c != '/') << byte;
    }
}

TEST(ArchivoCsv, IsHeaderColumnsLinesAndAnEmptyLine) {
    Memoria memoria;
    ponerRegistro(memoria.bloque(6), 0, {});
    ponerRegistro(memoria.bloque(6), 1, {.lluvia = 5});
    Decodificador decodificador;
    const auto archivo = archivoDatos(Formato::csv, memoria, decodificador, kUltimoBloque, kMomento, kConfig);
    EXPECT_EQ(
        utf8DeCp1252({reinterpret_cast<const std::uint8_t*>(archivo.bytes().data()), archivo.bytes().size()}),
        encabezadoCsv(kMomento, kConfig) + columnasCsv(false) + lineaDe({}) + lineaDe({.lluvia = 5}) +
            "\r\n");
    EXPECT_EQ(archivo.recuento.escritas, 2u);
}

TEST(ArchivoCsv, TheDegreeSignIsAByteOfWindows1252) {
    Decodificador decodificador;
    const auto archivo = archivoDatos(Formato::csv, Memoria(), decodificador, kUltimoBloque, kMomento, "");
    EXPECT_NE(archivo.bytes().find("Temp[\xBA"
                                   "C],Dir Viento [\xBA]"),
              std::string::npos);
}

TEST(ArchivoCsv, WithoutSamplesItKeepsHeaderColumnsAndEnd) {
    Decodificador decodificador;
    const auto archivo =
        archivoDatos(Formato::csv, Memoria(), decodificador, kUltimoBloque, kMomento, kConfig);
    EXPECT_EQ(archivo.bytes(), cp1252DeUtf8(encabezadoCsv(kMomento, kConfig) + columnasCsv(false) + "\r\n"));
}

TEST(ArchivoXls, HasFourNamesAndTheTenColumns) {
    Memoria memoria;
    ponerRegistro(memoria.bloque(6), 1, {});
    Decodificador decodificador;
    const auto archivo = archivoDatos(Formato::xls, memoria, decodificador, kUltimoBloque, kMomento, kConfig);
    EXPECT_EQ(archivo.bytes(), cp1252DeUtf8(columnasXls()) + lineaDe({}) + "\r\n");
}

TEST(ArchivoXls, WithoutSamplesItHasTheNamesAndTheLastLineOnly) {
    Decodificador decodificador;
    const auto archivo =
        archivoDatos(Formato::xls, Memoria(), decodificador, kUltimoBloque, kMomento, kConfig);
    EXPECT_EQ(archivo.bytes(), cp1252DeUtf8(columnasXls()) + "\r\n");
}

TEST(ArchivoJsonl, IsOneObjectALineAndNothingElse) {
    Memoria memoria;
    ponerRegistro(memoria.bloque(6), 1, {.viento = 40});
    Decodificador decodificador;
    const auto archivo =
        archivoDatos(Formato::jsonl, memoria, decodificador, kUltimoBloque, kMomento, kConfig);
    EXPECT_EQ(archivo.bytes(), objetoDe(RegistroPrueba{.viento = 40}.bytes(), false));
}

// What the window shows and saves, and what the console tool writes.
TEST(TextoDatos, IsTheFiles) {
    Memoria memoria;
    ponerRegistro(memoria.bloque(6), 1, {});
    for (const auto& suya : kFormatos) {
        Decodificador decodificador;
        decodificador.evaporacion(true);
        BloquesTexto bloques({}, {}, suya.redaccion);
        bloques.decodificar(memoria, decodificador, kUltimoBloque);
        const auto texto =
            textoDatos(suya.formato, cabeceraDatos(suya.formato, kMomento, kConfig, true), bloques);
        const auto archivo =
            archivoDatos(suya.formato, memoria, decodificador, kUltimoBloque, kMomento, kConfig);
        EXPECT_EQ(archivo.bytes(), cp1252DeUtf8(texto)) << suya.nombre();
    }
}

TEST(Formatos, EachIsReadByItsNameAndByThatOnly) {
    for (const auto& suya : kFormatos) EXPECT_EQ(leerFormato(suya.nombre()), suya.formato);
    for (const auto* otro : {"", "csv ", ".csv", "CSV", "json"}) EXPECT_EQ(leerFormato(otro), std::nullopt);
    EXPECT_EQ(nombresDeFormatos(), "csv, xls o jsonl");
    EXPECT_EQ(formatoDelNombre("a/b.c/Datos.JSONL"), Formato::jsonl);
    for (const auto* otro : {"", "csv", ".xls", "a.csv/b", "a.txt"})
        EXPECT_EQ(formatoDelNombre(otro), std::nullopt) << otro;
}

}  // namespace
}  // namespace telvane
