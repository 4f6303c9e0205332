#include "cli/ordenes.h"

#include <signal.h>

#include <sstream>

#include <nlohmann/json.hpp>

#include "data/archivo_base.h"
#include "live/marco_en_linea.h"
#include "tests/cli/cli_prueba.h"

namespace telvane {
namespace {

using namespace std::chrono_literals;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

using Ordenes = CliPrueba;

// --- usage

TEST_F(Ordenes, HelpGoesToTheOutputAndIsNoError) {
    for (const std::vector<std::string>& argumentos :
         {std::vector<std::string>{"--help"}, {"-h"}, {"descargar", "--help"}, {"convertir", "-h"}}) {
        const auto r = correr(argumentos);
        EXPECT_EQ(r.codigo, CodigoSalida::hecho);
        EXPECT_THAT(r.salida, HasSubstr("Uso: telvane-cli"));
        EXPECT_THAT(r.errores, IsEmpty());
    }
    EXPECT_THAT(correr({"descargar", "--help"}).salida, HasSubstr("--verificar"));
    for (const auto* orden : {"descargar", "convertir"})
        EXPECT_THAT(correr({orden, "--help"}).salida, HasSubstr("ampliado; estricto si falta")) << orden;
    EXPECT_THAT(correr({"descargar", "--help"}).salida, HasSubstr("También: --com N=DISPOSITIVO"));
}

TEST_F(Ordenes, HelpNamesEveryCommand) {
    const auto ayuda = correr({"--help"}).salida;
    const std::string comienzo = "\nÓrdenes:\n";
    const auto desde = ayuda.find(comienzo);
    ASSERT_NE(desde, std::string::npos);
    const auto lista = ayuda.substr(desde + comienzo.size());
    std::size_t lineas = 0;
    std::string linea;
    for (std::istringstream texto(lista); std::getline(texto, linea) && !linea.empty(); ++lineas) {
        EXPECT_THAT(linea, ContainsRegex("^  [a-z-]+ +[A-Z]"));
    }
    EXPECT_EQ(lineas, kDeclaraciones.size());
}

TEST_F(Ordenes, VersionGoesToTheOutput) {
    const auto r = correr({"--version"});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho);
    EXPECT_THAT(r.salida, StartsWith("telvane-cli "));
}

struct CasoUso {
    std::vector<std::string> argumentos;
    const char* mensaje;
};
class MalUso : public CliPrueba, public testing::WithParamInterface<CasoUso> {};

TEST_P(MalUso, IsToldInSpanishAndTouchesNoPort) {
    const auto r = correr(GetParam().argumentos);
    EXPECT_EQ(r.codigo, CodigoSalida::malUso);
    EXPECT_THAT(r.salida, IsEmpty());
    EXPECT_THAT(r.errores, HasSubstr(GetParam().mensaje));
    EXPECT_THAT(r.errores, testing::ContainsRegex("\n\\(telvane-cli( [a-z-]+)? --help\\)\n$"));
    EXPECT_EQ(std::count(r.errores.begin(), r.errores.end(), '('), 1);
    EXPECT_EQ(puertos.aperturas(kPuerto), 0U);
}

INSTANTIATE_TEST_SUITE_P(
    Argumentos, MalUso,
    testing::Values(
        CasoUso{{}, "falta la orden"}, CasoUso{{"nada"}, "no hay una orden \"nada\""},
        CasoUso{{"nada", "a.rgt", "b.csv"}, "no hay una orden \"nada\"\n"},
        CasoUso{{"buscar", "--nada"}, "no se entiende \"--nada\""},
        CasoUso{{"buscar", "sobra"}, "no se entiende \"sobra\""},
        CasoUso{{"--com", "x", "buscar"}, "--com x: "},
        CasoUso{{"--com", "0=/dev/a", "buscar"}, "el número va de 1 a 12"},
        CasoUso{{"--com", "13=/dev/a", "buscar"}, "el número va de 1 a 12"},
        CasoUso{{"--com", "1=/dev/a", "--com", "1=/dev/b", "buscar"}, "ya tiene dispositivo"},
        // Whether the order needs a port or not.
        CasoUso{{"--com", "99=/dev/a", "convertir", "a.rgt", "b.csv"}, "el número va de 1 a 12"},
        CasoUso{{"--com", "1=tcp://maquina", "estaciones"}, "se espera tcp://MÁQUINA:PUERTO"},
        CasoUso{{"--com", "1=tcp:maquina:4001", "buscar"}, "se espera tcp://MÁQUINA:PUERTO"},
        CasoUso{{"buscar", "--com"}, "--com: falta su valor"}, CasoUso{{"descargar"}, "falta --base"},
        CasoUso{{"--", "convertir", "a.rgt", "b.csv"}, "falta la orden: se escribe delante de --"},
        CasoUso{{"descargar", "--base", "x", "--espera", "0"}, "--espera: debe ser"},
        CasoUso{{"descargar", "--base", "x", "--reintentos", "-1"}, "--reintentos: debe ser"},
        CasoUso{{"descargar", "--base", "x", "--perfil", "otro"}, "--perfil: debe ser estricto o ampliado"},
        CasoUso{{"en-linea", "--cuenta", "0"}, "--cuenta: debe ser"},
        CasoUso{{"en-linea", "--cuenta", "1x"}, "--cuenta: debe ser"}, CasoUso{{"serie"}, "falta CIFRAS"},
        CasoUso{{"serie", "123"}, "8 cifras"}, CasoUso{{"serie", "1234567a"}, "8 cifras"},
        CasoUso{{"configurar"}, "no se pidió ningún cambio"},
        CasoUso{{"configurar", "--intervalo", "7"}, "--intervalo: debe ser 1, 5, 10, 15, 30 o 60"},
        CasoUso{{"configurar", "--fecha", "31/02/2020"},
                "--fecha: debe ser una fecha que existe, dd/mm/aaaa, de 2000 a 2064\n"},
        CasoUso{{"configurar", "--hora", "1:-0:0"}, "--hora: debe ser"},
        CasoUso{{"descargar", "--base", "x", "--reintentos", "-0"}, "--reintentos: debe ser"},
        CasoUso{{"configurar", "--fecha", "01/01/1999"}, "--fecha: debe ser"},
        CasoUso{{"configurar", "--hora", "25:00:00"}, "--hora: debe ser"},
        CasoUso{{"configurar", "--hora", "10:00:00", "--reloj-pc"}, "--reloj-pc no va con"},
        CasoUso{{"configurar", "--reloj-pc", "--respaldo", "x", "--sin-respaldo"}, "--respaldo no va con"},
        CasoUso{{"configurar", "--reloj-pc", "--sin-verificar", "--sin-respaldo"},
                "--sin-verificar no va con"},
        CasoUso{{"configurar", "--altitud", "123456"}, "--altitud: caben 5 caracteres"},
        CasoUso{{"configurar", "--usuario", "日本"}, "--usuario: hay un carácter"},
        CasoUso{{"configurar", "--reloj-pc", "--respaldo", "-"}, "--respaldo necesita un archivo"},
        CasoUso{{"--com", "1=", "configurar", "--reloj-pc"},
                "--com 1=: falta el dispositivo\n(telvane-cli configurar --help)"},
        CasoUso{{"estaciones", "--nocturna"},
                "--nocturna va con --valores ARCHIVO\n(telvane-cli estaciones --help)"},
        CasoUso{{"estaciones", "--valores", "x", "--json"}, "--valores no va con --json"},
        CasoUso{{"en-linea", "--descubrimiento", "--json"}, "--descubrimiento no da lecturas: quite --json"},
        CasoUso{{"configurar", "--usuario", "a\tb"}, "un carácter de control o mal escrito: quítelo"},
        // What begins like an option is one, and no value of the option before it.
        CasoUso{{"configurar", "--usuario", "--reloj-pc", "--borrar-memoria"},
                "--usuario: falta su valor; uno que empieza por guion se escribe --usuario=--reloj-pc"},
        CasoUso{{"configurar", "--usuario", "--nadie", "--borrar-memoria"}, "--usuario: falta su valor"},
        CasoUso{{"configurar", "--usuario", "-h"}, "--usuario: falta su valor"},
        CasoUso{{"descargar", "--base", "--verificar"}, "--base: falta su valor"},
        CasoUso{{"--com", "--json", "puertos"}, "--com: falta su valor"},
        CasoUso{{"en-linea", "--json", "--json"}, "--json se dio dos veces"},
        CasoUso{{"en-linea", "--cuenta", "1", "--cuenta=2"}, "--cuenta se dio dos veces"},
        CasoUso{{"en-linea", "--json=no"}, "--json no lleva valor"}, CasoUso{{"convertir"}, "falta ARCHIVO"},
        CasoUso{{"convertir", "a"}, "y las entradas\n(telvane-cli convertir --help)"},
        CasoUso{{"convertir", "a", "b", "c"}, "se esperan ENTRADA y SALIDA"},
        CasoUso{{"convertir", "a", "b", "--formato", "pdf"}, "--formato: debe ser csv, xls o "},
        CasoUso{{"convertir", "a", "b", "--serie", "1"}, "8 cifras"},
        CasoUso{{"descargar", "--base", ""}, "--base: no puede estar vacío"},
        CasoUso{{"descargar", "--base="}, "--base: no puede estar vacío"},
        CasoUso{{"descargar", "--base=", "--csv=x.csv"}, "--base: no puede estar vacío"},
        CasoUso{{"convertir", "--en=", "a.rgt", "b.rgt"}, "--en: no puede estar vacío"},
        CasoUso{{"descargar", "--base", "x", "--csv", ""}, "--csv: no puede estar vacío"},
        CasoUso{{"configurar", "--reloj-pc", "--borrar-memoria", "--respaldo", ""},
                "--respaldo: no puede estar vacío"},
        CasoUso{{"convertir", "--en", "", "a.rgt", "b.rgt"}, "--en: no puede estar vacío"},
        CasoUso{{"convertir", "--serie", "", "a.rgt", "b.csv"}, "--serie: no puede estar vacío"},
        CasoUso{{"convertir", "", "b.csv"}, "ARCHIVO: no puede estar vacío"},
        CasoUso{{"convertir", "a.rgt", ""}, "ARCHIVO: no puede estar vacío"},
        CasoUso{{"convertir", "--en", "d", "-"}, "no admite la entrada -"},
        CasoUso{{"convertir", "--en", "d", "x/a.rgt", "y/a.rgt"},
                "dos entradas darían d/a.csv: conviértalas por separado, cada una con su SALIDA"}));

TEST_F(Ordenes, TwoOutputsThatAreOneAreRefused) {
    const auto r = correr({"descargar", "--base", "-", "--csv", "-"});
    EXPECT_EQ(r.codigo, CodigoSalida::malUso);
    EXPECT_THAT(r.errores, HasSubstr("a la salida: dé un archivo al otro"));
    EXPECT_EQ(puertos.aperturas(kPuerto), 0U);
}

// --- buscar

TEST_F(Ordenes, TheSearchPassesOverNumbersWithoutADevice) {
    const auto r = correr({"buscar"});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho);
    EXPECT_THAT(r.salida, StartsWith("COM3"));
    EXPECT_LT(r.duracion, 1s);
}

TEST_F(Ordenes, TheFoundPortIsWrittenWithItsDevice) {
    const auto r = correr({"buscar", "--com", "3=/dev/the-cable"});
    EXPECT_EQ(r.salida, "COM3 /dev/the-cable\n");
}

TEST_F(Ordenes, ASilentPortCostsThreeSecondsAndTheNextIsTried) {
    puertos.agregar(1);
    const auto r = correr({"buscar"});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho);
    EXPECT_GE(r.duracion, 3s);
    EXPECT_LT(r.duracion, 4s);
}

TEST_F(Ordenes, APortThatCannotBeTriedIsTold) {
    puertos.agregar(1);
    puertos.rehusar(1, MotivoPuerto::ocupado);
    const auto r = correr({"buscar"});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho);
    EXPECT_THAT(r.errores, HasSubstr("COM1: "));
}

TEST_F(Ordenes, WithoutALoggerTheExitCodeIsThree) {
    PuertosSimulados& p = puertos;
    p.rehusar(kPuerto, MotivoPuerto::sinPermiso);
    const auto r = correr({"buscar"});
    EXPECT_EQ(r.codigo, CodigoSalida::sinRegistrador);
    EXPECT_THAT(r.salida, IsEmpty());
    EXPECT_THAT(r.errores, HasSubstr("telvane-cli puertos"));
}

TEST_F(Ordenes, AWrongPortIsToldBeforeAnyHelpOrVersion) {
    for (const auto& orden : std::vector<std::vector<std::string>>{{"--com", "xx", "--help"},
                                                                   {"--com", "xx", "--version"},
                                                                   {"--com", "xx", "buscar", "--version"},
                                                                   {"--com", "xx", "convertir", "--help"}}) {
        const auto r = correr(orden);
        EXPECT_EQ(r.codigo, CodigoSalida::malUso);
        EXPECT_THAT(r.errores, HasSubstr("--com xx: se espera NÚMERO=DISPOSITIVO"));
    }
    EXPECT_EQ(correr({"--com", "1=/dev/x", "--help"}).codigo, CodigoSalida::hecho);
    EXPECT_EQ(correr({"--com", "1=/dev/x", "--version"}).codigo, CodigoSalida::hecho);
}

TEST_F(Ordenes, ABusyPortIsToldAsBusyAndNoCableIsBlamed) {
    puertos.rehusar(kPuerto, MotivoPuerto::ocupado);
    const auto r = correr({"buscar"});
    EXPECT_EQ(r.codigo, CodigoSalida::sinRegistrador);
    EXPECT_THAT(r.errores, HasSubstr("en uso por otro programa: COM3. Ciérrelo"));
    EXPECT_THAT(r.errores, Not(HasSubstr("cable")));
    // Beside a port that was heard in vain, both.
    puertos.agregar(1);
    const auto ambos = correr({"buscar"});
    EXPECT_THAT(ambos.errores, HasSubstr("en uso por otro programa: COM3"));
    EXPECT_THAT(ambos.errores, HasSubstr("revise el cable"));
    puertos.rehusar(kPuerto, MotivoPuerto::sinPermiso);
    EXPECT_THAT(correr({"buscar"}).errores, HasSubstr("sin permiso: COM3"));
}

TEST_F(Ordenes, WhatIsNoSerialPortIsCorrectedAndNoCableIsBlamed) {
    for (const auto motivo : {MotivoPuerto::noEsTerminal, MotivoPuerto::noExiste, MotivoPuerto::noSeAbre}) {
        puertos.rehusar(kPuerto, motivo);
        const auto r = correr({"buscar"});
        EXPECT_EQ(r.codigo, CodigoSalida::sinRegistrador);
        EXPECT_THAT(r.errores, HasSubstr("no se pudo usar: COM3. Corrija lo que su línea dice"));
        EXPECT_THAT(r.errores, Not(HasSubstr("cable")));
    }
}

TEST_F(Ordenes, TwentyBytesAreNoLogger) {
    puertos.manipular(kPuerto, [](const ByteSaliente& saliente) {
        return saliente.indice < 20 ? Efecto::pasar(saliente.byte) : Efecto{};
    });
    EXPECT_EQ(correr({"buscar"}).codigo, CodigoSalida::sinRegistrador);
    puertos.manipular(kPuerto, [](const ByteSaliente& saliente) {
        return saliente.indice < 21 ? Efecto::pasar(saliente.byte) : Efecto{};
    });
    EXPECT_EQ(correr({"buscar"}).codigo, CodigoSalida::hecho);
}

TEST_F(Ordenes, COM12IsTheLastOneTried) {
    PuertosSimulados lejos(bucle, bucle.reloj());
    puertos.rehusar(kPuerto, MotivoPuerto::noExiste);
    puertos.conectar(13);
    EXPECT_EQ(correr({"buscar"}).codigo, CodigoSalida::sinRegistrador);
    puertos.conectar(12);
    EXPECT_THAT(correr({"buscar"}).salida, StartsWith("COM12"));
}

TEST_F(Ordenes, ALoggerInABrokenExchangeIsFoundByTheSecondProbe) {
    senalTras = {2100ms, SIGINT};
    puertos.manipular(kPuerto, [](const ByteSaliente& saliente) {
        auto efecto = Efecto::pasar(saliente.byte);
        efecto.callar = saliente.intercambio == Intercambio::lectura && saliente.indice == 50;
        return efecto;
    });
    EXPECT_EQ(correr({"configuracion"}).codigo, CodigoSalida::interrumpido);
    senalTras = {};
    puertos.manipular(kPuerto, {});
    EXPECT_EQ(correr({"buscar"}).codigo, CodigoSalida::hecho);
}

// --- configuracion

TEST_F(Ordenes, TheConfigurationIsWrittenForPeople) {
    const auto r = correr({"configuracion"});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho);
    EXPECT_THAT(r.salida, HasSubstr("Nro  : 02080050\n"));
    EXPECT_THAT(r.salida, HasSubstr("Ubicacion: Finca Norte "));
    EXPECT_THAT(r.salida, HasSubstr("Muestras cada 60 Minutos\n"));
    EXPECT_THAT(r.salida, HasSubstr("Reloj: 20/11/2026 10:00:0"));
    EXPECT_THAT(r.salida, Not(HasSubstr("\r")));
}

TEST_F(Ordenes, TheConfigurationIsWrittenForPrograms) {
    const auto r = correr({"configuracion", "--json"});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho);
    const auto json = nlohmann::json::parse(r.salida);
    EXPECT_EQ(json["puerto"], 3);
    EXPECT_EQ(json["serie"], "02080050");
    EXPECT_EQ(json["ubicacion"], "Finca Norte");
    EXPECT_EQ(json["altitud"], "827");
    EXPECT_EQ(json["intervalo_minutos"], 60);
    EXPECT_EQ(json["evaporacion"], true);
    EXPECT_THAT(json["reloj"].get<std::string>(), StartsWith("2026-11-20T10:00:0"));
    EXPECT_TRUE(json["dispositivo"].is_null());
}

TEST_F(Ordenes, AWrongClockIsToldAndTheReadGoesOn) {
    puertos.manipular(kPuerto, [](const ByteSaliente& saliente) {
        const bool hora = saliente.intercambio == Intercambio::lectura && saliente.indice == 2 + 105;
        return Efecto::pasar(hora ? 0x99 : saliente.byte);
    });
    const auto r = correr({"configuracion", "--json"});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho);
    EXPECT_THAT(r.errores, HasSubstr("hora mal"));
    EXPECT_TRUE(nlohmann::json::parse(r.salida)["reloj"].is_null());
}

// --- en-linea

TEST_F(Ordenes, LiveReadingsAreCounted) {
    const auto r = correr({"en-linea", "--cuenta", "3"});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho);
    std::size_t veces = 0;
    for (auto lugar = r.salida.find("[RH%]="); lugar != std::string::npos;
         lugar = r.salida.find("[RH%]=", lugar + 1)) {
        ++veces;
    }
    EXPECT_EQ(veces, 3U);
    EXPECT_THAT(r.salida, HasSubstr("Temp[ºC]="));
}

TEST_F(Ordenes, LiveReadingsForProgramsAreOneObjectALine) {
    const auto r = correr({"en-linea", "--cuenta", "2", "--json", "--cada", "10"});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho);
    std::istringstream lineas(r.salida);
    std::string linea;
    std::vector<std::string> horas;
    while (std::getline(lineas, linea)) {
        const auto json = nlohmann::json::parse(linea);
        EXPECT_TRUE(json["temperatura"].is_number());
        EXPECT_TRUE(json["evaporacion"].is_number());
        horas.push_back(json["hora"]);
    }
    EXPECT_THAT(horas, testing::ElementsAre("2026-11-20T10:00:00", "2026-11-20T10:00:10"));
}

TEST_F(Ordenes, LiveReadingsGoOnUntilASignal) {
    senalTras = {30s, SIGINT};
    const auto r = correr({"en-linea", "--json"});
    EXPECT_EQ(r.codigo, CodigoSalida::interrumpido);
    EXPECT_EQ(std::count(r.salida.begin(), r.salida.end(), '\n'), 30);
    EXPECT_FALSE(puertos.abierto(kPuerto));
}

// --- serie

TEST_F(Ordenes, TheSerialNumberIsWrittenAndReadBack) {
    const auto r = correr({"serie", "20800512"});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho);
    EXPECT_EQ(r.salida, "20800512\n");
    EXPECT_THAT(r.errores, HasSubstr("02080050 -> 20800512"));
    EXPECT_EQ(puertos.maquina(kPuerto).serie(), "20800512");
}

// Its cable was put into another logger meanwhile, which bears the number already.
TEST_F(Ordenes, ASerialNumberIsConfirmedByTheLoggerThatTookIt) {
    bool escrito = false;
    puertos.manipular(kPuerto, [&](const ByteSaliente& saliente) {
        escrito = escrito || saliente.intercambio == Intercambio::serie;
        const bool letra =
            escrito && saliente.intercambio == Intercambio::lectura && saliente.indice == 2 + 40;
        return Efecto::pasar(letra ? 'X' : saliente.byte);
    });
    const auto r = correr({"serie", "20800512"});
    EXPECT_EQ(r.codigo, CodigoSalida::fallo);
    EXPECT_THAT(r.salida, IsEmpty());
    EXPECT_THAT(
        r.errores,
        HasSubstr("lo leído después lleva el número 20800512, y el resto de la configuración "
                  "no es el de antes: contestó otro registrador, o la línea estropea las "
                  "lecturas. Escribir el número no borra nada. Revise el cable y el adaptador, y mire con "
                  "\"telvane-cli configuracion\" quién contesta\n"));
}

// The number that is told is not believed after one reading.
TEST_F(Ordenes, ASerialNumberIsReadTwiceBeforeItIsReplaced) {
    puertos.manipular(kPuerto, [veces = 0](const ByteSaliente& saliente) mutable {
        const bool cifra = saliente.intercambio == Intercambio::lectura && saliente.indice == 2;
        return Efecto::pasar(cifra && ++veces == 1 ? 0x77 : saliente.byte);
    });
    const auto r = correr({"serie", "20800512"});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho) << r.errores;
    EXPECT_THAT(r.errores, HasSubstr("02080050 -> 20800512"));
}

TEST_F(Ordenes, ASerialNumberThatDidNotStayIsAFailure) {
    puertos.manipular(kPuerto, [](const ByteSaliente& saliente) {
        const bool cifra = saliente.intercambio == Intercambio::lectura && saliente.indice == 2;
        return Efecto::pasar(cifra ? 0x77 : saliente.byte);
    });
    const auto r = correr({"serie", "20800512"});
    EXPECT_EQ(r.codigo, CodigoSalida::fallo);
    EXPECT_THAT(r.errores, HasSubstr("lo leído después es el número 77800512, no 20800512. Escribir el "
                                     "número no borra nada: la memoria sigue como estaba. Mire con "
                                     "\"telvane-cli configuracion\" qué número tiene y, si no es el que "
                                     "quería, repita la orden\n"));
}

// --- configurar

TEST_F(Ordenes, AChangeIsShownAndRefusedWithoutTheWordToErase) {
    const auto r = correr({"configurar", "--usuario", "Otro"});
    EXPECT_EQ(r.codigo, CodigoSalida::malUso);
    EXPECT_THAT(r.errores, HasSubstr("Usuario: \"INTA Estacion Experimental\" -> \"Otro\""));
    EXPECT_THAT(r.errores, HasSubstr("--borrar-memoria"));
    EXPECT_EQ(puertos.maquina(kPuerto).cambios(), 0U);
}

TEST_F(Ordenes, AConfigurationIsBackedUpWrittenAndReadBack) {
    const auto imagen = puertos.maquina(kPuerto).imagen();
    const auto r = correr({"configurar", "--usuario", "Señor Ñandú", "--altitud", "12", "--intervalo", "15",
                           "--reloj-pc", "--borrar-memoria", "--respaldo", carpeta / "antes.rgt"});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho) << r.errores;
    EXPECT_EQ(leerTodo(carpeta / "antes.rgt"), comoTexto(imagen));
    const auto& maquina = puertos.maquina(kPuerto);
    EXPECT_EQ(maquina.texto(CampoTexto::usuario), std::string(19, ' ') + "Señor Ñandú");
    EXPECT_EQ(maquina.texto(CampoTexto::altitud), "   12");
    // What was not asked for stays.
    EXPECT_EQ(maquina.texto(CampoTexto::ubicacion).find("Finca Norte"), 0U);
    EXPECT_EQ(maquina.intervaloCodigo(), 0x15);
    EXPECT_THAT(r.salida, HasSubstr("Muestras cada 15 Minutos"));
}

TEST_F(Ordenes, AValueThatBeginsLikeAnOptionIsWrittenWithTheEqualSign) {
    const auto r = correr(
        {"configurar", "--usuario=--reloj-pc", "--latitud", "-33.5", "--borrar-memoria", "--sin-respaldo"});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho) << r.errores;
    const auto& maquina = puertos.maquina(kPuerto);
    EXPECT_EQ(maquina.texto(CampoTexto::usuario), std::string(20, ' ') + "--reloj-pc");
    EXPECT_EQ(maquina.texto(CampoTexto::latitud), std::string(10, ' ') + "-33.5");
}

TEST_F(Ordenes, WhoeverAnswersAfterTheBackupIsTheOneThatWasBackedUp) {
    for (const bool siempre : {true, false}) {
        bool copiada = false;
        int letras = 0;
        puertos.manipular(kPuerto, [&](const ByteSaliente& saliente) {
            copiada = copiada || saliente.intercambio == Intercambio::descarga;
            const bool letra =
                copiada && saliente.intercambio == Intercambio::lectura && saliente.indice == 1 + 40;
            return Efecto::pasar(letra && (letras++ == 0 || siempre) ? 'X' : saliente.byte);
        });
        const auto respaldo = carpeta / (siempre ? "otro.rgt" : "mismo.rgt");
        const auto r =
            correr({"configurar", "--usuario", "Otro", "--borrar-memoria", "--respaldo", respaldo.string()});
        EXPECT_TRUE(std::filesystem::exists(respaldo));
        // One damaged reading is read again.
        EXPECT_EQ(r.codigo, siempre ? CodigoSalida::fallo : CodigoSalida::hecho) << r.errores;
        EXPECT_EQ(puertos.maquina(kPuerto).cambios() == 0U, siempre);
        if (siempre) {
            EXPECT_THAT(r.errores, HasSubstr("después del respaldo contesta otro registrador"));
            EXPECT_THAT(r.errores, HasSubstr("El respaldo de la memoria está en " + respaldo.string()));
        }
    }
}

TEST_F(Ordenes, WithoutABackupFileTheMemoryGoesToTheUsersFolder) {
    ASSERT_EQ(::setenv("XDG_DATA_HOME", carpeta.ruta().c_str(), 1), 0);
    const auto r = correr({"configurar", "--usuario", "Otro", "--borrar-memoria"});
    ::unsetenv("XDG_DATA_HOME");
    EXPECT_EQ(r.codigo, CodigoSalida::hecho) << r.errores;
    const auto nombre = nombreArchivoBase("02080050", bucle.reloj().ahora()).substr(0, 17);
    std::vector<std::string> archivos;
    for (const auto& entrada_ : std::filesystem::directory_iterator(carpeta.ruta() / "telvane")) {
        archivos.push_back(entrada_.path().filename().string());
    }
    ASSERT_EQ(archivos.size(), 1U);
    EXPECT_THAT(archivos[0], StartsWith(nombre));
}

TEST_F(Ordenes, TheUsersFolderIsNotMadeUnlessSomethingGoesThere) {
    ASSERT_EQ(::setenv("XDG_DATA_HOME", (carpeta / "datos").c_str(), 1), 0);
    for (const std::vector<std::string>& orden :
         {std::vector<std::string>{"configurar", "--usuario", "INTA Estacion Experimental",
                                   "--borrar-memoria"},
          {"configurar", "--usuario", "Otro"},
          {"configurar", "--usuario", "Otro", "--borrar-memoria", "--sin-respaldo"},
          {"configurar", "--intervalo", "5", "--borrar-memoria", "--respaldo", carpeta / "x.rgt"}})
        correr(orden);
    PuertosSimulados vacios(bucle, bucle.reloj(), 0);
    losPuertos = &vacios;
    EXPECT_EQ(correr({"configurar", "--reloj-pc", "--borrar-memoria"}).codigo, CodigoSalida::sinRegistrador);
    ::unsetenv("XDG_DATA_HOME");
    EXPECT_THAT(nombresEn(carpeta.ruta()), testing::ElementsAre("x.rgt"));
}

TEST_F(Ordenes, AFailedBackupWritesNothing) {
    const auto r =
        correr({"configurar", "--usuario", "Otro", "--borrar-memoria", "--respaldo", carpeta / "no/x.rgt"});
    EXPECT_EQ(r.codigo, CodigoSalida::fallo);
    EXPECT_EQ(puertos.maquina(kPuerto).cambios(), 0U);
}

TEST_F(Ordenes, WithoutChangesNothingIsWritten) {
    const auto r = correr({"configurar", "--usuario", "INTA Estacion Experimental", "--intervalo", "60"});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho);
    EXPECT_EQ(puertos.maquina(kPuerto).cambios(), 0U);
}

TEST_F(Ordenes, TheLoggersOwnClockGoesOnWhenNoneIsGiven) {
    puertos.maquina(kPuerto).ponerReloj({2024, 12, 31, 23h + 59min + 50s}, bucle.reloj().monotono());
    const auto r = correr({"configurar", "--usuario", "Otro", "--borrar-memoria", "--sin-respaldo"});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho) << r.errores;
    const auto reloj = puertos.maquina(kPuerto).reloj(bucle.reloj().monotono());
    EXPECT_EQ(reloj.anio, 2024);
}

TEST_F(Ordenes, AGivenDateAndTimeAreSent) {
    const auto r = correr(
        {"configurar", "--fecha", "31/12/2024", "--hora", "23:59:58", "--borrar-memoria", "--sin-respaldo"});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho) << r.errores;
    const auto reloj = puertos.maquina(kPuerto).reloj(bucle.reloj().monotono());
    EXPECT_GE(reloj.anio, 2024);
    EXPECT_LE(reloj.anio, 2025);
}

TEST_F(Ordenes, WhatReadsBackDifferentIsAFailure) {
    bool escrito = false;
    puertos.manipular(kPuerto, [&](const ByteSaliente& saliente) {
        escrito = escrito || saliente.intercambio == Intercambio::escritura;
        const bool letra =
            escrito && saliente.intercambio == Intercambio::lectura && saliente.indice == 1 + 40;
        return Efecto::pasar(letra ? 'X' : saliente.byte);
    });
    const auto r = correr({"configurar", "--usuario", "Otro", "--borrar-memoria", "--sin-respaldo"});
    EXPECT_EQ(r.codigo, CodigoSalida::fallo);
    EXPECT_THAT(r.errores, HasSubstr("lo leído después no es lo enviado (Ubicacion). Dé la memoria por "
                                     "borrada, y vuelva a configurar con --sin-respaldo.\n"
                                     "No hay respaldo de la memoria: se pidió --sin-respaldo.\n"));
}

TEST_F(Ordenes, ABlankClearsAText) {
    const auto r = correr({"configurar", "--usuario", " ", "--borrar-memoria", "--sin-respaldo"});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho) << r.errores;
    EXPECT_EQ(puertos.maquina(kPuerto).texto(CampoTexto::usuario), std::string(30, ' '));
}

// A variable that nobody set must not cost the memory.
TEST_F(Ordenes, AnEmptyTextIsNoValue) {
    for (const std::string opcion : {"--usuario", "--ubicacion", "--latitud", "--longitud", "--altitud"}) {
        for (const auto& linea : {std::vector<std::string>{opcion, ""}, {opcion + "="}}) {
            std::vector<std::string> todos = {"configurar", "--borrar-memoria", "--sin-respaldo"};
            todos.insert(todos.end(), linea.begin(), linea.end());
            const auto r = correr(todos);
            EXPECT_EQ(r.codigo, CodigoSalida::malUso);
            EXPECT_THAT(r.errores, HasSubstr(opcion + ": no puede estar vacío; para borrarlo dé un blanco, " +
                                             opcion + " \" \""));
        }
    }
    EXPECT_EQ(puertos.aperturas(kPuerto), 0U);
}

// --- puertos

TEST_F(Ordenes, EveryNumberIsListed) {
    const auto r = correr({"puertos", "--com", "2=/dev/no-such-port"});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho);
    EXPECT_EQ(std::count(r.salida.begin(), r.salida.end(), '\n'), 12);
    EXPECT_THAT(r.salida, HasSubstr("COM2   /dev/no-such-port ausente\n"));
    EXPECT_THAT(r.salida, HasSubstr("COM12  -"));
}

TEST_F(Ordenes, PortsForPrograms) {
    const auto json = nlohmann::json::parse(correr({"puertos", "--json", "--com", "2=/dev/null"}).salida);
    ASSERT_EQ(json.size(), 12U);
    EXPECT_EQ(json[0]["estado"], "ausente");
    EXPECT_EQ(json[1]["dispositivo"], "/dev/null");
    EXPECT_EQ(json[1]["puerto"], 2);
}

}  // namespace
}  // namespace telvane
