#include <fcntl.h>
#include <pty.h>
#include <sys/stat.h>

#include <filesystem>
#include <functional>
#include <utility>

#include <nlohmann/json.hpp>

#include "data/conversion.h"
#include "data/informe.h"
#include "platform/bucle_posix.h"
#include "tests/cli/cli_prueba.h"

namespace telvane {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using testing::UnorderedElementsAre;

class Convertir : public CliPrueba {
   protected:
    Convertir() : imagen(memoriaSimulada(Clima(7))) { guardar("a.rgt", imagen); }

    void guardar(const std::string& nombre, const std::vector<std::uint8_t>& bytes) {
        std::ofstream(carpeta / nombre, std::ios::binary) << comoTexto(bytes);
    }
    // What the window saves of this image when no logger was read.
    std::string comoLaVentana(bool evaporacion = true, Perfil perfil = Perfil::estricto) {
        Memoria memoria;
        std::copy(imagen.begin(), imagen.end(), memoria.imagen().begin());
        const auto cabecera = leerCabecera(imagen);
        Decodificador decodificador(perfil);
        decodificador.evaporacion(evaporacion);
        const auto archivo = archivoDatos(Formato::csv, memoria, decodificador, kUltimoBloque,
                                          bucle.reloj().ahora(), cabecera.texto);
        return std::string(archivo.bytes());
    }

    std::vector<std::uint8_t> imagen;
};

TEST_F(Convertir, TheCsvIsByteForByteTheWindows) {
    const auto r = correr({"convertir", carpeta / "a.rgt", carpeta / "a.csv"});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho) << r.errores;
    EXPECT_EQ(leerTodo(carpeta / "a.csv"), comoLaVentana());
    EXPECT_THAT(r.errores, HasSubstr("muestras escritas"));
    EXPECT_THAT(r.salida, IsEmpty());
}

TEST_F(Convertir, TheFormatIsTheOutputsOrTheOneAskedFor) {
    EXPECT_EQ(correr({"convertir", carpeta / "a.rgt", carpeta / "a.xls"}).codigo, CodigoSalida::hecho);
    EXPECT_THAT(leerTodo(carpeta / "a.xls"), StartsWith("Fecha,Hora,Temperatura["));
    EXPECT_EQ(correr({"convertir", carpeta / "a.rgt", carpeta / "b.xls", "--formato", "csv"}).codigo,
              CodigoSalida::hecho);
    EXPECT_EQ(leerTodo(carpeta / "b.xls"), comoLaVentana());
    EXPECT_EQ(correr({"convertir", carpeta / "a.rgt", carpeta / "sin_final"}).codigo, CodigoSalida::hecho);
    EXPECT_EQ(leerTodo(carpeta / "sin_final"), comoLaVentana());
}

TEST_F(Convertir, AnEmptyImageIsAFailureAndItsOutputStaysAsItWas) {
    guardar("vacio.rgt", {});
    std::ofstream(carpeta / "v.csv") << "antes";
    for (const auto& cual : {(carpeta / "vacio.rgt").string(), std::string("-")}) {
        const auto r = correr({"convertir", cual, carpeta / "v.csv"});
        EXPECT_EQ(r.codigo, CodigoSalida::fallo) << cual;
        EXPECT_THAT(r.errores, HasSubstr("el archivo base está vacío")) << cual;
        EXPECT_EQ(leerTodo(carpeta / "v.csv"), "antes") << cual;
    }
}

TEST_F(Convertir, BehindTwoDashesEveryWordIsAName) {
    const auto antes = std::filesystem::current_path();
    std::filesystem::current_path(carpeta.ruta());
    const std::vector<std::vector<std::string>> lineas = {
        {"convertir", "a.rgt", "--", "--x.csv"},
        {"convertir", "--", "a.rgt", "--x.csv"},
        {"convertir", "--perfil", "ampliado", "a.rgt", "--formato=csv", "--", "--x.csv"},
        {"--com", "1=/dev/x", "convertir", "a.rgt", "--", "--x.csv"}};
    for (const auto& linea : lineas) {
        std::filesystem::remove("--x.csv");
        const auto r = correr(linea);
        EXPECT_EQ(r.codigo, CodigoSalida::hecho) << r.errores;
        EXPECT_TRUE(std::filesystem::exists("--x.csv"));
    }
    EXPECT_EQ(correr({"convertir", "a.rgt", "--", "--perfil=ampliado", "b.csv"}).codigo,
              CodigoSalida::malUso);
    std::filesystem::current_path(antes);
}

TEST_F(Convertir, PipesAtBothEnds) {
    entrada.llenar(comoTexto(imagen));
    const auto r = correr({"convertir", "-", "-"});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho) << r.errores;
    EXPECT_EQ(r.salida, comoLaVentana());
}

TEST_F(Convertir, ASerialNumberSelectsTheVariantAndStandsInTheHeader) {
    const auto r = correr({"convertir", "--serie", "12345678", carpeta / "a.rgt", "-"});
    EXPECT_THAT(r.salida, HasSubstr("Numero de serie : 12345678\r\n"));
    EXPECT_THAT(r.salida, testing::Not(HasSubstr("Eva parcial")));
}

TEST_F(Convertir, ASerialNumberWithNibblesAboveNineIsGivenAsItIsShown) {
    const auto r = correr({"convertir", "--serie", "02080:5?", carpeta / "a.rgt", "-"});
    EXPECT_THAT(r.salida, HasSubstr("Numero de serie : 02080:5?\r\n"));
    EXPECT_EQ(correr({"convertir", "--serie", "02080A5F", carpeta / "a.rgt", "-"}).codigo,
              CodigoSalida::malUso);
}

TEST_F(Convertir, TheWiderProfileIsAskedFor) {
    // A first record of 2024.
    imagen[kInicioRegistros + 5] = 0x24;
    guardar("a.rgt", imagen);
    const auto estricto = correr({"convertir", carpeta / "a.rgt", "-"});
    const auto ampliado = correr({"convertir", carpeta / "a.rgt", "-", "--perfil", "ampliado"});
    EXPECT_EQ(estricto.salida, comoLaVentana());
    EXPECT_EQ(ampliado.salida, comoLaVentana(true, Perfil::ampliado));
    EXPECT_NE(estricto.salida, ampliado.salida);
}

TEST_F(Convertir, JsonLinesHoldEverySampleWithTheSameNumbers) {
    const auto r = correr({"convertir", carpeta / "a.rgt", "-", "--formato", "jsonl"});
    std::istringstream objetos(r.salida);
    std::istringstream lineas(comoLaVentana());
    std::string linea;
    while (std::getline(lineas, linea) && !linea.starts_with("Fecha,")) continue;
    std::size_t muestras = 0;
    while (std::getline(lineas, linea) && linea != "\r") {
        std::string objeto;
        ASSERT_TRUE(std::getline(objetos, objeto));
        const auto json = nlohmann::ordered_json::parse(objeto);
        std::string unidos;
        for (const auto& [clave, valor] : json.items()) {
            if (clave == "hora") continue;
            unidos += "," + (valor.is_string() ? valor.get<std::string>() : valor.dump());
        }
        ASSERT_EQ(linea.substr(19), unidos + "\r");
        const auto hora = json["hora"].get<std::string>();
        ASSERT_EQ(linea.substr(0, 19), hora.substr(8, 2) + "/" + hora.substr(5, 2) + "/" + hora.substr(0, 4) +
                                           "," + hora.substr(11));
        ++muestras;
    }
    EXPECT_GT(muestras, 8000U);
    EXPECT_EQ(objetos.peek(), std::istringstream::traits_type::eof());
}

TEST_F(Convertir, AShortImageIsConvertedAndTold) {
    imagen.resize(10'000);
    guardar("a.rgt", imagen);
    const auto r = correr({"convertir", carpeta / "a.rgt", "-"});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho);
    EXPECT_THAT(r.errores,
                HasSubstr("aviso: en " + (carpeta / "a.rgt").string() + " hay 10000 bytes de los 262144"));
    guardar("uno.rgt", {0x02});
    EXPECT_THAT(correr({"convertir", carpeta / "uno.rgt", "-"}).errores,
                HasSubstr("aviso: en " + (carpeta / "uno.rgt").string() + " hay 1 byte de los 262144"));
    // A record that is cut is none: it would show values that nobody measured.
    imagen.resize(9984);
    EXPECT_EQ(r.salida, comoLaVentana());
}

TEST_F(Convertir, WhatIsNoMemoryBecomesNoTable) {
    std::ofstream(carpeta / "notas.rgt") << "Visita del lunes:\ncambiar la pila\n";
    auto r = correr({"convertir", carpeta / "notas.rgt", carpeta / "notas.csv"});
    EXPECT_EQ(r.codigo, CodigoSalida::fallo);
    EXPECT_THAT(
        r.errores,
        HasSubstr("notas.rgt: no es la memoria de un registrador, sino un texto: dé el archivo base (.rgt)"));
    entrada.llenar("Visita del lunes:\ncambiar la pila\n");
    EXPECT_THAT(correr({"convertir", "-", carpeta / "notas.csv"}).errores,
                HasSubstr("telvane-cli: la entrada: no es la memoria"));
    EXPECT_THAT(nombresEn(carpeta.ruta()), UnorderedElementsAre("a.rgt", "notas.rgt"));
    // Of an erased one there is nothing to tell but that it is empty.
    guardar("borrada.rgt", std::vector<std::uint8_t>(640, 0xFF));
    r = correr({"convertir", carpeta / "borrada.rgt", carpeta / "borrada.csv"});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho);
    EXPECT_THAT(r.errores, HasSubstr("0 muestras escritas"));
}

TEST_F(Convertir, AnInputThatCannotBeReadIsAFailureWithItsReason) {
    const auto r = correr({"convertir", carpeta / "no.rgt", carpeta / "a.csv"});
    EXPECT_EQ(r.codigo, CodigoSalida::fallo);
    EXPECT_THAT(r.errores, HasSubstr("no.rgt: no existe"));
    EXPECT_THAT(nombresEn(carpeta.ruta()), UnorderedElementsAre("a.rgt"));
}

TEST_F(Convertir, OneImageTellsNothingOfTheOneBefore) {
    Conversor conversor;
    const auto momento = bucle.reloj().ahora();
    const auto limpio =
        Conversor().convertir(std::vector<std::uint8_t>(100, 0x11), Formato::csv, Perfil::estricto, momento);
    conversor.convertir(imagen, Formato::csv, Perfil::estricto, momento);
    const auto despues =
        conversor.convertir(std::vector<std::uint8_t>(100, 0x11), Formato::csv, Perfil::estricto, momento);
    EXPECT_EQ(despues.bytes(), limpio.bytes());
}

// Many at once wait on real descriptors.
class ConvertirMuchos : public Convertir {
   protected:
    Resultado correrDeVeras(const std::vector<std::string>& argumentos, int senal = 0) {
        BuclePosix real;
        FlujoEnMemoria salida;
        FlujoEnMemoria errores;
        EntornoCli entorno{{.bucle = real,
                            .reloj = bucle.reloj(),
                            .correrHasta = [&](const auto& condicion,
                                               auto plazo) { return real.correrHasta(condicion, plazo); },
                            .salida = salida.descriptor(),
                            .errores = errores.descriptor()},
                           {}};
        entorno.senal = senal;
        const int codigo = correrCli(argumentos, entorno);
        return {static_cast<CodigoSalida>(codigo), salida.texto(), errores.texto(), {}};
    }
};

TEST_F(ConvertirMuchos, EveryImageGetsItsFile) {
    std::vector<std::string> argumentos = {"convertir", "--en", carpeta / "d"};
    std::filesystem::create_directory(carpeta / "d");
    for (int i = 0; i < 20; ++i) {
        guardar(std::to_string(i) + ".rgt", imagen);
        argumentos.push_back(carpeta / (std::to_string(i) + ".rgt"));
    }
    const auto r = correrDeVeras(argumentos);
    EXPECT_EQ(r.codigo, CodigoSalida::hecho) << r.errores;
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(leerTodo(carpeta / ("d/" + std::to_string(i) + ".csv")), comoLaVentana());
    EXPECT_EQ(std::count(r.errores.begin(), r.errores.end(), '\n'), 20);
}

TEST_F(ConvertirMuchos, ABadOneDoesNotStopTheOthers) {
    guardar("b.rgt", imagen);
    const auto r = correrDeVeras({"convertir", "--en", carpeta.ruta().string(), carpeta / "a.rgt",
                                  carpeta / "no.rgt", carpeta / "b.rgt"});
    EXPECT_EQ(r.codigo, CodigoSalida::fallo);
    EXPECT_THAT(r.errores, HasSubstr("1 de 3 archivos sin convertir"));
    EXPECT_THAT(nombresEn(carpeta.ruta()), UnorderedElementsAre("a.rgt", "b.rgt", "a.csv", "b.csv"));
}

// Whatever stands where a table is to go, one image in a folder meets the same rule as many, and so do its
// words and its status.
TEST_F(ConvertirMuchos, OneImageInAFolderIsTreatedLikeMany) {
    const auto tabla = carpeta / "d/a.csv";
    const std::pair<const char*, std::function<void()>> casos[] = {
        {"no es un archivo normal. Dé otro nombre", [&] { ASSERT_EQ(::mkfifo(tabla.c_str(), 0600), 0); }},
        {"no es un archivo normal. Dé otro nombre",
         [&] { std::filesystem::create_symlink("/dev/null", tabla); }},
        {"ahí está la ficha de una descarga",
         [&] {
             ASSERT_EQ(
                 correr({"descargar", "--base", carpeta / "f.rgt", "--reemplazar", "--ficha", tabla}).codigo,
                 CodigoSalida::hecho);
         }},
    };
    guardar("b.rgt", imagen);
    for (const auto& [motivo, poner] : casos) {
        for (const bool muchas : {false, true}) {
            std::filesystem::remove_all(carpeta / "d");
            std::filesystem::create_directory(carpeta / "d");
            poner();
            std::vector<std::string> orden = {"convertir", "--en", carpeta / "d", carpeta / "a.rgt"};
            if (muchas) orden.push_back(carpeta / "b.rgt");
            const auto r = correrDeVeras(orden);
            EXPECT_EQ(r.codigo, CodigoSalida::fallo) << r.errores;
            EXPECT_THAT(r.errores, HasSubstr("no se pudo guardar " + tabla.string() + ": " + motivo));
            EXPECT_THAT(r.errores, HasSubstr(muchas ? "1 de 2 archivos sin convertir"
                                                    : "1 de 1 archivos sin convertir"));
        }
    }
    std::filesystem::remove(tabla);
    const auto r = correrDeVeras({"convertir", "--en", carpeta / "d", carpeta / "a.rgt"});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho);
    EXPECT_THAT(r.errores, StartsWith((carpeta / "a.rgt").string() + ": "));
    EXPECT_EQ(leerTodo(tabla), comoLaVentana());
}

TEST_F(ConvertirMuchos, ASignalEndsTheRun) {
    guardar("b.rgt", imagen);
    const auto r = correrDeVeras(
        {"convertir", "--en", carpeta.ruta().string(), carpeta / "a.rgt", carpeta / "b.rgt"}, SIGINT);
    EXPECT_EQ(r.codigo, CodigoSalida::interrumpido);
}

}  // namespace
}  // namespace telvane
