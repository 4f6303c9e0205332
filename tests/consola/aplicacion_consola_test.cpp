// The run of a command line, and the values that stand in one.
#include "consola/aplicacion_consola.h"

#include <fcntl.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "consola/enteros.h"
#include "consola/nombres.h"
#include "platform/descriptor.h"
#include "platform/destino.h"
#include "tests/apoyo/leer_todo.h"
#include "tests/consola/consola_prueba.h"

namespace telvane {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class Corrida : public ConsolaPrueba {
   protected:
    // A program with one command, "hacer".
    int correr(const std::vector<std::string>& argumentos, const std::function<void()>& hacer) {
        Consola consola(entorno);
        OrdenElegida elegida;
        return correrPrograma(
            {"prog", "1.2", "Hace cosas"}, consola, argumentos, elegida,
            [&](Argumentos& linea) { linea.orden("hacer", "La hace").alElegir([&] { elegida = hacer; }); });
    }
    int terminar(const std::function<void()>& como) { return correr({"hacer"}, como); }
};

TEST_F(Corrida, EveryEndHasItsStatusAndItsLine) {
    EXPECT_EQ(terminar([] {}), 0);
    EXPECT_EQ(errores.texto(), "");
    EXPECT_EQ(terminar([] { throw ErrorCli(CodigoSalida::sinRegistrador, "no hay"); }), 3);
    EXPECT_EQ(terminar([] { interrumpir(); }), 130);
    EXPECT_EQ(terminar([] { throw ErrorNombre("otra clase"); }), 2);
    EXPECT_EQ(terminar([] { throw std::runtime_error("otra cosa"); }), 1);
    EXPECT_EQ(errores.texto(), "prog: no hay\nprog: interrumpido\nprog: otra clase\nprog: otra cosa\n");
}

TEST_F(Corrida, WhatTheSystemSaysIsToldInSpanish) {
    EXPECT_EQ(terminar([] { static_cast<void>(std::filesystem::file_size("/no/hay")); }), 1);
    EXPECT_EQ(errores.texto(), "prog: /no/hay: no existe. Revise el nombre\n");
}

// A shell may lead the streams anywhere: "1<>archivo.sqlite".
TEST_F(Corrida, NothingIsWrittenIntoADataBaseThatAStreamLeadsTo) {
    const std::string base = std::string("SQLite format 3\0", 16) + "lo de muchos años";
    std::ofstream(carpeta / "h.sqlite", std::ios::binary) << base;
    std::ofstream(carpeta / "h.sqlite-wal", std::ios::binary) << "lo de hoy";
    // In the words in which a file of that name is refused.
    const std::string motivo(motivoDeBaseDeDatos(carpeta / "h.sqlite"));
    try {
        static_cast<void>(revisarDestino(carpeta / "h.sqlite"));
        ADD_FAILURE();
    } catch (const ErrorNombre& error) {
        EXPECT_STREQ(error.what(), noGuardado(carpeta / "h.sqlite", motivo).what());
    }
    EXPECT_EQ(motivoDeBaseDeDatos(carpeta / "h.txt"), "");
    bool hecho = false;
    const auto rehusa = [&](const std::vector<std::string>& linea) {
        EXPECT_EQ(correr(linea, [&] { hecho = true; }), 2);
        EXPECT_FALSE(hecho);
        EXPECT_EQ(leerTodo(carpeta / "h.sqlite"), base);
        EXPECT_EQ(leerTodo(carpeta / "h.sqlite-wal"), "lo de hoy");
    };
    for (const auto* nombre : {"h.sqlite", "h.sqlite-wal"}) {
        for (const int modo : {O_RDWR, O_WRONLY | O_APPEND}) {
            const Descriptor ajeno(::open((carpeta / nombre).c_str(), modo | O_CLOEXEC));
            for (const auto* palabra : {"hacer", "--help", "no hay"}) {
                entorno.salida = ajeno();
                rehusa({palabra});
                EXPECT_THAT(errores.texto(), HasSubstr("la salida de la orden: " + motivo));
                entorno.salida = salida.descriptor();
                entorno.errores = ajeno();
                rehusa({palabra});
                EXPECT_THAT(salida.texto(), HasSubstr("lo que la orden avisa: " + motivo));
                entorno.salida = entorno.errores = ajeno();
                rehusa({palabra});
                entorno.salida = salida.descriptor();
                entorno.errores = errores.descriptor();
            }
        }
    }
    // What only is read there is no output.
    const Descriptor leido(::open((carpeta / "h.sqlite").c_str(), O_RDONLY | O_CLOEXEC));
    entorno.errores = leido();
    EXPECT_EQ(terminar([] {}), 0);
}

TEST_F(Corrida, NothingIsWrittenIntoAFileThatIsRead) {
    std::ofstream(carpeta / "a.rgt") << "leído";
    ArchivosLeidos leidos;
    leidos.agregar(carpeta / "a.rgt");
    const Descriptor ajeno(::open((carpeta / "a.rgt").c_str(), O_RDWR | O_CLOEXEC));
    entorno.errores = ajeno();
    Consola consola(entorno);
    EXPECT_THROW(consola.exigirFlujosLibres({.leidos = leidos}), ErrorNombre);
    consola.aviso("no se hizo");
    EXPECT_EQ(salida.texto(), "no se hizo\n");
    EXPECT_EQ(leerTodo(carpeta / "a.rgt"), "leído");
}

// By what the file holds, be it under no name any more.
TEST_F(Corrida, NothingIsWrittenIntoAFileOfAKindThatTheProgramKeeps) {
    std::ofstream(carpeta / "a") << "de los que se quedan";
    const Descriptor ajeno(::open((carpeta / "a").c_str(), O_RDWR | O_CLOEXEC));
    entorno.salida = ajeno();
    std::filesystem::remove(carpeta / "a");
    Consola consola(entorno);
    const auto seQueda = [](std::span<const std::uint8_t> bytes) {
        return std::string(bytes.size() == 7 && bytes[0] == 'd' ? "eso se queda" : "");
    };
    try {
        consola.exigirFlujosLibres({.porque = seQueda, .vista = 7});
        ADD_FAILURE();
    } catch (const ErrorNombre& error) {
        EXPECT_STREQ(error.what(), "no se pudo guardar la salida de la orden: eso se queda");
    }
    consola.exigirFlujosLibres({.porque = [](auto) { return ""; }, .vista = 7});
}

TEST_F(Corrida, ALineThatIsNoneDoesNothing) {
    bool hecho = false;
    for (const auto& linea : {std::vector<std::string>{}, {"otra"}, {"hacer", "--no-hay"}}) {
        EXPECT_EQ(correr(linea, [&] { hecho = true; }), 2);
    }
    EXPECT_FALSE(hecho);
    EXPECT_THAT(errores.texto(), StartsWith("prog: "));
    EXPECT_EQ(salida.texto(), "");
}

TEST_F(Corrida, HelpAndVersionGoToTheOutput) {
    EXPECT_EQ(correr({"--help"}, [] {}), 0);
    EXPECT_THAT(salida.texto(), HasSubstr("Hace cosas"));
    EXPECT_EQ(correr({"--version"}, [] {}), 0);
    EXPECT_THAT(salida.texto(), HasSubstr("prog 1.2"));
    EXPECT_EQ(errores.texto(), "");
}

TEST(ValorDeOpcion, AWholeNumberIsOneWithinItsBounds) {
    for (const auto* bueno : {"0", "7", "-3", "60"}) EXPECT_EQ(motivoRango(bueno, -3, 60), "") << bueno;
    for (const auto* malo : {"", "61", "-4", "7x", " 7", "7.0", "+7", "-0", "-00", "99999999999"})
        EXPECT_EQ(motivoRango(malo, -3, 60), "debe ser un número entero de -3 a 60") << malo;
    EXPECT_EQ(leerEntero("-3"), -3);
}

TEST(ValorDeOpcion, AStationsNameIsOfLettersDigitsAndDashes) {
    for (const auto& bueno : {std::string("Norte-2_b"), std::string("7"), std::string(64, 'x')})
        EXPECT_EQ(motivoNombre(bueno), "") << bueno;
    for (const auto& malo : {std::string(), std::string("a/b"), std::string("ñ"), std::string("a b"),
                             std::string("a.b"), std::string(65, 'x')})
        EXPECT_EQ(motivoNombre(malo), "debe ser de letras sin tilde, cifras, - y _, 64 como mucho") << malo;
}

}  // namespace
}  // namespace telvane
