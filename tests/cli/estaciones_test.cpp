// Files of stations: what is read of them, what is refused and how it is told, and how they are listed.
#include <sys/stat.h>

#include <nlohmann/json.hpp>

#include "cli/ajustes_descarga.h"
#include "platform/destino.h"
#include "tests/cli/cli_prueba.h"

namespace telvane {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

TEST(ValorDeAjuste, IsReadAsAShellReadsItAndNeverRun) {
    const auto leer = [](const std::string& texto) { return leerValor(texto, "X"); };
    EXPECT_EQ(leer(""), "");
    EXPECT_EQ(leer("a"), "a");
    EXPECT_EQ(leer("'a $b `c` \"d\" \\'"), "a $b `c` \"d\" \\");
    EXPECT_EQ(leer("\"a \\\" \\\\ \\$ \\` \\n 'b'\""), "a \" \\ $ ` \\n 'b'");
    EXPECT_EQ(leer("a\\ b\\;c"), "a b;c");
    EXPECT_EQ(leer("a'b 'c\"d\"e"), "ab cde");
    EXPECT_EQ(leer("a   # b c"), "a");
    EXPECT_EQ(leer("a#b"), "a#b");
    ::setenv("HOME", "/casa", 1);
    EXPECT_EQ(leer("~/d"), "/casa/d");
    EXPECT_EQ(leer("'~/d'"), "~/d");
}

TEST(ValorDeAjuste, WhatCannotBeIsToldWithWhatToWrite) {
    const auto motivo = [](const std::string& texto) -> std::string {
        try {
            leerValor(texto, "X");
        } catch (const ErrorAjustes& error) {
            return error.what();
        }
        return "";
    };
    EXPECT_EQ(motivo("a b"), "hay un blanco sin comillas: escriba X=\"...\"");
    EXPECT_EQ(motivo("\"a"), "falta la comilla que cierra");
    EXPECT_EQ(motivo("'a"), "falta la comilla que cierra");
    EXPECT_EQ(motivo("a\\"), "termina en \\: un ajuste no sigue en la línea siguiente, quítela");
    for (const auto* orden : {"$(x)", "`x`", "\"$(x)\"", "\"`x`\""})
        EXPECT_THAT(motivo(orden), HasSubstr("no vale: los ajustes se leen, no se ejecutan")) << orden;
    for (const auto* orden : {"a;x", "a&x", "a|x", "a<x", "a>x", "(x)"})
        EXPECT_THAT(motivo(orden), HasSubstr("sin comillas: escriba X=\"...\"")) << orden;
}

class Estaciones : public CliPrueba {
   protected:
    std::string poner(const std::string& nombre, const std::string& texto) {
        std::ofstream(carpeta / nombre, std::ios::binary) << texto;
        return carpeta / nombre;
    }
    // What is wrong in a file that says this besides its port.
    std::string motivo(const std::string& texto, const std::string& nombre = "norte.conf") {
        try {
            leerAjustes(poner(nombre, texto), ClaseAjustes::estacion);
        } catch (const ErrorAjustes& error) {
            return error.what();
        }
        return "";
    }
    Resultado listar(std::vector<std::string> mas = {}) {
        mas.insert(mas.begin(), {"estaciones", "--en", carpeta.ruta().string()});
        return correr(mas);
    }

    static constexpr auto kPuertoUsb = "COM=1=/dev/ttyUSB0\n";
};

TEST_F(Estaciones, AFileSaysOneStation) {
    const auto a =
        leerAjustes(poner("norte-2.conf",
                          "# nota\n\n  export COM='4=tcp://[fd00::20]:4001'  # la red\nSERIE=02080050\n"
                          "CARPETA=/srv/datos\nARCHIVO=/srv/h.sqlite\nCENTRAL=postgresql://yo@s/x\n"
                          "PERFIL=estricto\nHASTA=06:30\nOPCIONES=\"--verificar --reintentos 5\""),
                    ClaseAjustes::estacion);
    EXPECT_EQ(a.nombre, "norte-2");
    EXPECT_THAT(a.com, ElementsAre("4=tcp://[fd00::20]:4001"));
    EXPECT_EQ(a.dispositivo(), "tcp://[fd00::20]:4001");
    EXPECT_EQ(a.serie, "02080050");
    EXPECT_EQ(a.carpeta, "/srv/datos");
    EXPECT_EQ(a.archivo, "/srv/h.sqlite");
    EXPECT_EQ(a.central, "postgresql://yo@s/x");
    EXPECT_EQ(a.perfil, "estricto");
    EXPECT_EQ(a.hasta, "06:30");
    EXPECT_THAT(a.opciones, ElementsAre("--verificar", "--reintentos", "5"));
    EXPECT_TRUE(a.red());
    EXPECT_FALSE(leerAjustes(poner("sur.conf", kPuertoUsb), ClaseAjustes::estacion).red());
    EXPECT_TRUE(leerAjustes(poner("sur.conf", std::string(kPuertoUsb) + "ARCHIVO=postgres://s/x\n"),
                            ClaseAjustes::estacion)
                    .red());
}

// What would stand behind counted for nothing.
// Names become files, and what is handed on is read line by line.
TEST_F(Estaciones, AValueIsTextWithoutControlCharacters) {
    const auto nocturna = [&](const std::string& texto) -> std::string {
        const auto r = correr({"estaciones", "--nocturna", "--valores", poner("ajustes", texto)});
        EXPECT_EQ(r.codigo, r.errores.empty() ? CodigoSalida::hecho : CodigoSalida::malUso) << texto;
        return r.errores;
    };
    for (const auto* mala : {"a\xff", "a\x1b[31m", "a\x7f", "a\u009b", "a\tb"}) {
        const auto entre = [&](const std::string& nombre, const std::string& antes) {
            return "\n" + nombre + "=\"" + antes + mala + "\"\n";
        };
        const std::string que = ": hay un carácter de control o mal escrito";
        for (const auto& [nombre, antes] : std::vector<std::pair<std::string, std::string>>{
                 {"NOMBRE", ""}, {"CARPETA", "/"}, {"PERFIL", ""}})
            EXPECT_THAT(nocturna(entre(nombre, antes)), HasSubstr("ajustes, línea 2: " + nombre + que))
                << mala;
        for (const auto& [nombre, antes] :
             std::vector<std::pair<std::string, std::string>>{{"ARCHIVO", "/"},
                                                              {"CENTRAL", "postgresql://h/"},
                                                              {"SERIE", ""},
                                                              {"COMO", ""},
                                                              {"HASTA", ""}})
            EXPECT_THAT(motivo("COM=1=/dev/x" + entre(nombre, antes)),
                        HasSubstr("norte.conf, línea 2: " + nombre + que))
                << mala;
        if (std::string_view(mala).find('\t') != std::string_view::npos) continue;
        EXPECT_THAT(nocturna(entre("COM", "1=/dev/")), HasSubstr("ajustes, línea 2: COM" + que)) << mala;
        EXPECT_THAT(nocturna(entre("OPCIONES", "--ficha ")), HasSubstr("línea 2: OPCIONES" + que)) << mala;
    }
    for (const auto* nombre : {".", ".."})
        EXPECT_THAT(nocturna(std::string("NOMBRE=") + nombre + "\n"), HasSubstr("línea 1: NOMBRE: "));
    EXPECT_THAT(nocturna("NOMBRE=sur\\\n"), HasSubstr("línea 1: termina en \\"));
    // Between two values, and in a note, anything may stand.
    EXPECT_EQ(nocturna("# a\xf1o\nCOM=\"1=/dev/x\t2=/dev/y\"\nOPCIONES=\"--verificar\t--espera 9\"\n"), "");
}

TEST_F(Estaciones, AFileThatIsTooLongIsToldAndNotCut) {
    const auto largo =
        kPuertoUsb + ("#" + std::string((1U << 20U) - 1 - std::string(kPuertoUsb).size(), 'x'));
    EXPECT_EQ(motivo(largo), "");
    EXPECT_THAT(motivo(largo + "\nSERIE=99\n"),
                HasSubstr("norte.conf: tiene más de 1048576 bytes, quite lo que sobra"));
}

TEST_F(Estaciones, WhatCannotBeIsToldWithItsFileAndLine) {
    const auto tras = [&](const std::string& linea) { return motivo(kPuertoUsb + linea + "\n"); };
    EXPECT_EQ(tras("CARPTEA=/x"), carpeta /
                                      "norte.conf, línea 2: no hay un ajuste \"CARPTEA\": son COM, SERIE, "
                                      "COMO, CARPETA, ARCHIVO, CENTRAL, "
                                      "PERFIL, HASTA y OPCIONES");
    EXPECT_THAT(tras("NOMBRE=sur"), HasSubstr("no hay un ajuste \"NOMBRE\""));
    EXPECT_THAT(tras("norte"), HasSubstr("línea 2: se espera NOMBRE=valor"));
    EXPECT_THAT(tras("SERIE=02080050\r"), HasSubstr("línea 2: termina en CR LF"));
    EXPECT_THAT(tras(std::string("PERFIL=am\0pliado", 16)), HasSubstr("línea 2: tiene un byte nulo"));
    EXPECT_THAT(motivo(std::string("\xEF\xBB\xBF") + kPuertoUsb),
                HasSubstr("línea 1: empieza con una marca"));
    EXPECT_THAT(tras("COM=2=/dev/ttyUSB1"),
                HasSubstr("línea 2: COM ya está en la línea 1: deje una de las dos"));
    EXPECT_THAT(tras("SERIE=2080050"), HasSubstr("SERIE: \"2080050\" no vale: "));
    for (const auto& como : {std::string("ñ"), std::string("a/b"), std::string(), std::string(65, 'a')})
        EXPECT_THAT(tras("COMO=" + como), HasSubstr("COMO: \"" + como + "\" no vale: ")) << como;
    EXPECT_THAT(tras("ARCHIVO=\nCOMO=sur"), HasSubstr("norte.conf: COMO es su nombre en ARCHIVO"));
    EXPECT_THAT(tras("CARPETA=srv/datos"), HasSubstr("CARPETA: \"srv/datos\" no empieza por /"));
    EXPECT_THAT(tras("CENTRAL=servidor/x"), HasSubstr("CENTRAL: no empieza por / ni por postgresql://"));
    EXPECT_THAT(tras("ARCHIVO=\nCENTRAL=/x"), HasSubstr("norte.conf: CENTRAL copia lo que hay en ARCHIVO"));
    for (const auto* hora : {"24:00", "7:00", "07:60", "07", "", "aa:bb", "-1:00"})
        EXPECT_THAT(tras(std::string("HASTA=") + hora), HasSubstr("no vale: es una hora, como 07:00"))
            << hora;
    for (const auto* opcion : {"--base x", "--csv=x", "--com 1=x", "--ficha x", "--serie 1", "--reemplazar"})
        EXPECT_THAT(tras(std::string("OPCIONES=\"") + opcion + "\""), HasSubstr("no vale aquí")) << opcion;
    EXPECT_THAT(motivo(""), HasSubstr("norte.conf: falta COM"));
    EXPECT_THAT(motivo("COM = 1=/dev/ttyUSB0"),
                HasSubstr("línea 1: sobra el blanco delante de =: escriba COM="));
    EXPECT_THAT(motivo("COM=1=dev/ttyUSB0\n"),
                HasSubstr("línea 1: COM: \"1=dev/ttyUSB0\" no es NÚMERO=/DISPOSITIVO"));
    EXPECT_THAT(motivo("COM=13=/dev/ttyUSB0\n"), HasSubstr("el número va de 1 a 12"));
    EXPECT_THAT(motivo("COM=1=tcp://servidor\n"), HasSubstr("se espera tcp://MÁQUINA:PUERTO"));
    for (const auto* com : {"COM=1=tcp://yo:secreta@s:4001\n", "COM=x=tcp://yo:secreta@s:4001\n"})
        EXPECT_EQ(motivo(com).find("secreta"), std::string::npos) << motivo(com);
    EXPECT_THAT(motivo("COM=\"1=/dev/a 2=/dev/b\"\n"), HasSubstr("COM: una estación tiene un puerto"));
    EXPECT_THAT(motivo("COM=\"1=/dev/a COM2=/dev/b\"\n"), HasSubstr("parece haber dos puertos"));
    EXPECT_THAT(motivo(kPuertoUsb, "finca norte.conf"),
                HasSubstr("el nombre de la estación es el del archivo"));
    EXPECT_EQ(motivo(kPuertoUsb, std::string(128, 'a') + ".conf"), "");
    EXPECT_THAT(motivo(kPuertoUsb, std::string(129, 'a') + ".conf"), HasSubstr("128 como mucho: cámbielo"));
}

TEST_F(Estaciones, OptionsThatTheDownloadDoesNotUnderstandAreToldBeforeTheNight) {
    for (const auto& [opciones, que] : std::vector<std::pair<std::string, std::string>>{
             {"--noexiste", "no se entiende \"--noexiste\""},
             {"suelto", "no se entiende \"suelto\""},
             {"--bas=x", "no se entiende \"--bas=x\""},
             {"--help", "--help y --version no descargan nada"},
             {"-h", "--help y --version no descargan nada"},
             {"--version", "--help y --version no descargan nada"},
             {"--perfil=zz", "--perfil: "},
             {"--espera=0", "--espera: "},
             {"--espera", "--espera: falta su valor"},
             {"--espera --verificar", "--espera: falta su valor"},
             {"--reintentos 99999", "--reintentos: "},
             {"--verificar --verificar", "--verificar se dio dos veces"},
             {"--verificar -- x", "-- no vale aquí"}}) {
        const auto ajustes = kPuertoUsb + std::string("OPCIONES=\"") + opciones + "\"\n";
        EXPECT_THAT(motivo(ajustes), HasSubstr("norte.conf, línea 2: OPCIONES: " + que)) << opciones;
        EXPECT_THAT(motivo(ajustes), Not(HasSubstr("--base"))) << opciones;
        EXPECT_THROW(leerAjustes(poner("ajustes", ajustes), ClaseAjustes::nocturna), ErrorAjustes)
            << opciones;
        EXPECT_EQ(listar().codigo, CodigoSalida::fallo) << opciones;
    }
    EXPECT_EQ(motivo(kPuertoUsb +
                     std::string("OPCIONES='--verificar --espera 9 --reintentos=0 --perfil estricto'\n")),
              "");
}

// It would fail every night.
TEST_F(Estaciones, ADataSheetThatTheDownloadWouldRefuseIsToldBeforeTheNight) {
    const auto dicho = [&](const std::string& opciones) {
        const auto archivo = poner("ajustes", kPuertoUsb + std::string("OPCIONES=\"") + opciones + "\"\n");
        const auto r = correr({"estaciones", "--nocturna", "--valores", archivo});
        EXPECT_EQ(r.codigo, r.errores.empty() ? CodigoSalida::hecho : CodigoSalida::malUso) << opciones;
        return r.errores;
    };
    const std::string linea = "ajustes, línea 2: OPCIONES: --ficha: ";
    for (const auto& [ficha, final] :
         std::vector<std::pair<std::string, std::string>>{{"/srv/x.rgt", ".rgt"},
                                                          {"x.RGT", ".rgt"},
                                                          {"/srv/x.rgt.Parcial", ".parcial"},
                                                          {"/srv/x.rgt.parcial.2.anterior", ".anterior"}}) {
        const std::string motivo = noGuardado(ficha, "los nombres que terminan en " + final +
                                                         " son de otra clase de archivo. Dé otro")
                                       .what();
        EXPECT_THAT(dicho("--ficha " + ficha), HasSubstr(linea + motivo)) << ficha;
        EXPECT_THAT(dicho("--verificar --ficha=" + ficha), HasSubstr(linea + motivo)) << ficha;
        const auto r = correr({"descargar", "--base", carpeta / "a.rgt", "--ficha", ficha});
        EXPECT_EQ(r.codigo, CodigoSalida::malUso);
        EXPECT_THAT(r.errores, HasSubstr(motivo));
    }
    // The service runs where nobody writes, and cron somewhere else.
    for (const std::string ficha : {"x.json", "./x.json", "srv/x.json", "~/x.json"}) {
        const auto motivo = linea + "\"" + ficha + "\" no empieza por /; ¿falta una barra?\n";
        EXPECT_THAT(dicho("--ficha " + ficha), HasSubstr(motivo));
        EXPECT_THAT(dicho("--ficha=" + ficha + " --verificar"), HasSubstr(motivo));
    }
    for (const std::string bien : {"--ficha /srv/x.json", "--ficha=/srv/rgt", "--ficha -", "--ficha=-",
                                   "--ficha /srv/x.json --reemplazar"})
        EXPECT_EQ(dicho(bien), "");
}

TEST_F(Estaciones, AHintSpeaksOfWhatStandsInTheFile) {
    const auto conBase = std::string(kPuertoUsb) + "OPCIONES='--base x'\n";
    EXPECT_THAT(motivo(conBase), HasSubstr("los nombres salen de CARPETA y del de este archivo"));
    try {
        leerAjustes(poner("ajustes", conBase), ClaseAjustes::nocturna);
        ADD_FAILURE();
    } catch (const ErrorAjustes& error) {
        EXPECT_THAT(error.what(), HasSubstr("los nombres salen de CARPETA y NOMBRE"));
    }
    EXPECT_THAT(motivo("COM=13=/dev/x\n"), HasSubstr("línea 1: COM: 13=/dev/x: el número va de 1 a 12"));
    EXPECT_THAT(motivo("COM=1=tcp://servidor\n"), HasSubstr("línea 1: COM: 1=tcp://servidor: se espera"));
}

TEST_F(Estaciones, ARemedyCanBePastedIntoAShell) {
    const auto lugar = carpeta / "l'a b";
    std::filesystem::create_directory(lugar);
    const auto archivo =
        poner("l'a b/norte.conf", std::string(kPuertoUsb) + "CENTRAL=postgresql://yo:secreta@s/x\n");
    ASSERT_EQ(::chmod(archivo.c_str(), 0644), 0);
    const auto citado = "'" + carpeta.ruta().string() + "/l'\\''a b/norte.conf'";
    const auto remedio = "sudo chown root:telvane " + citado + " && sudo chmod 0640 " + citado;
    EXPECT_THAT(correr({"estaciones", "--valores", archivo}).errores, HasSubstr(remedio));
    const auto relativo = std::filesystem::relative(archivo).string();
    EXPECT_THAT(correr({"estaciones", "--valores", relativo}).errores,
                HasSubstr("norte.conf' && sudo chmod 0640 '/"));
}

TEST_F(Estaciones, WhatWouldNotBeLookedAtIsRefused) {
    const auto archivo = poner("norte.conf", kPuertoUsb);
    const std::string lugar = carpeta.ruta().string();
    for (const auto& mas : std::vector<std::vector<std::string>>{{"--json", "--valores", archivo},
                                                                 {"--en", lugar, "--valores", archivo},
                                                                 {"--nocturna"},
                                                                 {"--nocturna", "--json"}}) {
        auto linea = mas;
        linea.insert(linea.begin(), "estaciones");
        const auto r = correr(linea);
        EXPECT_EQ(r.codigo, CodigoSalida::malUso) << mas.back();
        EXPECT_THAT(r.errores, HasSubstr("--valores")) << mas.back();
        EXPECT_THAT(r.salida, IsEmpty()) << mas.back();
    }
}

TEST_F(Estaciones, APasswordThatAllCanReadIsRefusedAndNeverShown) {
    const std::string texto = std::string(kPuertoUsb) + "CENTRAL=postgresql://yo:secreta@s/x\n";
    const auto archivo = poner("norte.conf", texto);
    ASSERT_EQ(::chmod(archivo.c_str(), 0644), 0);
    const auto r = listar({"--json"});
    EXPECT_EQ(r.codigo, CodigoSalida::fallo);
    EXPECT_THAT(r.errores, HasSubstr("línea 2: lleva una contraseña y todos pueden leer el archivo"));
    ASSERT_EQ(::chmod(archivo.c_str(), 0640), 0);
    const auto s = listar({"--json"});
    EXPECT_EQ(s.codigo, CodigoSalida::hecho);
    EXPECT_THAT(s.salida, HasSubstr("postgresql://yo:…@s/x"));
    EXPECT_THAT(r.errores + r.salida + s.salida + s.errores, Not(HasSubstr("secreta")));
    for (const auto* direccion : {"postgresql://yo@s/x?passw%6frd=secreta", "postgresql://yo:se?creta@s/x"}) {
        ASSERT_EQ(
            ::chmod(poner("norte.conf", std::string(kPuertoUsb) + "CENTRAL=" + direccion + "\n").c_str(),
                    0644),
            0);
        EXPECT_THAT(listar().errores, HasSubstr("línea 2: lleva una contraseña")) << direccion;
    }
    // An address without one is nobody's secret.
    ASSERT_EQ(
        ::chmod(poner("norte.conf", std::string(kPuertoUsb) + "CENTRAL=postgresql://yo@s/x\n").c_str(), 0644),
        0);
    EXPECT_EQ(listar().codigo, CodigoSalida::hecho);
}

TEST_F(Estaciones, ABrokenFileIsToldAndTheOthersAreListed) {
    poner("a.conf", kPuertoUsb);
    poner("b.conf", "COM=1=/dev/ttyUSB1\nSERIE=1\n");
    poner("c.conf", "COM=2=/dev/ttyUSB2\n");
    poner("d.txt", "nada");
    poner(".e.conf", "nada");
    const auto r = listar();
    EXPECT_EQ(r.codigo, CodigoSalida::fallo);
    EXPECT_THAT(r.salida, HasSubstr("a: COM1=/dev/ttyUSB0"));
    EXPECT_THAT(r.salida, HasSubstr("c: COM2=/dev/ttyUSB2"));
    EXPECT_EQ(std::ranges::count(r.salida, '\n'), 2);
    EXPECT_THAT(r.errores, HasSubstr("b.conf, línea 2: SERIE"));
    EXPECT_THAT(r.errores, HasSubstr("archivos de estación que no se entienden: 1"));
    const auto json = nlohmann::json::parse(listar({"--json"}).salida)["estaciones"];
    ASSERT_EQ(json.size(), 3U);
    EXPECT_TRUE(json[0]["error"].is_null());
    EXPECT_THAT(json[1]["error"].get<std::string>(), HasSubstr("línea 2"));
}

TEST_F(Estaciones, WithoutSystemdTheyAreListedAndThatIsTold) {
    poner("a.conf", std::string(kPuertoUsb) + "SERIE=02080050\nCARPETA=" + carpeta.ruta().string() + "\n");
    poner("a_2026-11-20_021913.rgt", "");
    poner("a_2026-11-21_021913.rgt", "");
    const auto r = listar();
    EXPECT_EQ(r.codigo, CodigoSalida::hecho);
    EXPECT_EQ(r.salida,
              "a: COM1=/dev/ttyUSB0, registrador 02080050, última imagen a_2026-11-21_021913.rgt\n");
    EXPECT_THAT(r.errores, HasSubstr("aquí no corre systemd"));
    EXPECT_TRUE(nlohmann::json::parse(listar({"--json"}).salida)["estaciones"][0]["proxima"].is_null());
}

TEST_F(Estaciones, SystemdTellsTheLastAndTheNextRun) {
    poner("a.conf", kPuertoUsb);
    poner("b.conf", "COM=1=tcp://s:4001\n");
    poner("c.conf", kPuertoUsb);
    poner("d.conf", kPuertoUsb);
    std::vector<std::string> preguntado;
    systemctl = [&](const std::vector<std::string>& argumentos) {
        preguntado = argumentos;
        return std::optional<std::string>(
            "Result=success\nExecMainStartTimestamp=@1795141023\nExecMainStatus=0\nId=telvane-descarga@a."
            "service\n"
            "ActiveState=inactive\n\nNextElapseUSecRealtime=@1795227423\nId=telvane-descarga@a.timer\n"
            "ActiveState=active\n\nResult=exit-code\nExecMainStartTimestamp=@1795141023\nExecMainStatus=3\n"
            "Id=telvane-descarga-red@b.service\nActiveState=failed\n\nNextElapseUSecRealtime=\n"
            "Id=telvane-descarga-red@b.timer\nActiveState=inactive\n\nResult=success\n"
            "ExecMainStartTimestamp=@1795141023\nId=telvane-descarga@c.service\nActiveState=activating\n");
    };
    const auto r = listar();
    EXPECT_EQ(r.codigo, CodigoSalida::hecho) << r.errores;
    EXPECT_EQ(
        r.salida,
        "a: COM1=/dev/ttyUSB0, la última 2026-11-20T02:17:03Z (bien), la próxima 2026-11-21T02:17:03Z\n"
        "b: COM1=tcp://s:4001, la última 2026-11-20T02:17:03Z (falló, código 3), apagada: sudo systemctl "
        "enable --now telvane-descarga-red@b.timer\n"
        "c: COM1=/dev/ttyUSB0, en marcha desde 2026-11-20T02:17:03Z, apagada: sudo systemctl enable --now "
        "telvane-descarga@c.timer\n"
        "d: COM1=/dev/ttyUSB0, ninguna imagen todavía, apagada: sudo systemctl enable --now "
        "telvane-descarga@d.timer\n");
    EXPECT_THAT(preguntado, testing::Contains("telvane-descarga-red@b.timer"));
    EXPECT_THAT(r.errores, IsEmpty());
    const auto json = nlohmann::json::parse(listar({"--json"}).salida)["estaciones"];
    EXPECT_EQ(json[0]["proxima"], "2026-11-21T02:17:03Z");
    EXPECT_EQ(json[1]["codigo"], 3);
    EXPECT_EQ(json[1]["encendida"], false);
    EXPECT_EQ(json[2]["en_marcha"], true);
    EXPECT_TRUE(json[3]["ultima"].is_null());
}

// It forgets a run that went well when no timer waits for the next one.
TEST_F(Estaciones, ADownloadThatSystemdForgotIsNotSaidToBeMissing) {
    poner("a.conf", kPuertoUsb + ("CARPETA=" + carpeta.ruta().string() + "\n"));
    poner("a_2026-11-21_021913.rgt", "");
    // Of another station in the same folder.
    poner("a_2_2026-11-22_021913.rgt", "");
    systemctl = [](const std::vector<std::string>&) { return std::optional<std::string>(""); };
    EXPECT_EQ(listar().salida,
              "a: COM1=/dev/ttyUSB0, apagada: sudo systemctl enable --now telvane-descarga@a.timer, última "
              "imagen a_2026-11-21_021913.rgt\n");
}

// A full disk where systemd makes a unit's private folder.
TEST_F(Estaciones, ADownloadThatCouldNotBeginIsToldAsThat) {
    poner("a.conf", kPuertoUsb);
    std::string empezo;
    systemctl = [&](const std::vector<std::string>&) {
        return std::optional<std::string>("Result=resources\nExecMainStartTimestamp=" + empezo +
                                          "\nExecMainCode=0\nExecMainStatus=0\n"
                                          "Id=telvane-descarga@a.service\nActiveState=failed\n");
    };
    EXPECT_THAT(listar().salida, HasSubstr(", la última no pudo empezar (resources), "));
    EXPECT_EQ(nlohmann::json::parse(listar({"--json"}).salida)["estaciones"][0]["resultado"], "resources");
    empezo = "@1795141023";
    EXPECT_THAT(listar().salida,
                HasSubstr("la última 2026-11-20T02:17:03Z (la de después no pudo empezar: resources)"));
}

// As systemd 252 writes it, whatever form was asked for.
TEST_F(Estaciones, TheNextRunMayBeWrittenOut) {
    poner("a.conf", kPuertoUsb);
    std::string proxima;
    systemctl = [&](const std::vector<std::string>&) {
        return std::optional<std::string>("NextElapseUSecRealtime=" + proxima +
                                          "\nId=telvane-descarga@a.timer\nActiveState=active\n");
    };
    proxima = "Sat 2026-11-21 02:17:03 UTC";
    EXPECT_THAT(listar().salida, HasSubstr("la próxima 2026-11-21T02:17:03Z"));
    for (const auto* raro : {"n/a", "", "Sat 2026-11-21 02:17:03 CET", "Sat 2026-13-21 02:17:03 UTC",
                             "Sat 2026-11-21 02:x7:03 UTC", "2026-11-21 02:17:03 UTC"}) {
        proxima = raro;
        EXPECT_THAT(listar().salida, testing::Not(HasSubstr("la próxima"))) << raro;
    }
}

// It would fail every night, and nobody would know what runs there.
TEST_F(Estaciones, ATimerWhoseFileIsGoneIsListedWithWhatToDo) {
    poner("a.conf", kPuertoUsb);
    poner("b.conf", "COM=1=tcp://s:4001\n");
    poner("rota.conf", "COM=\n");
    estaciones = carpeta.ruta();
    std::vector<std::string> preguntado;
    systemctl = [&](const std::vector<std::string>& argumentos) {
        const bool porTodos = std::ranges::find(argumentos, "timers.target") != argumentos.end();
        if (porTodos) preguntado = argumentos;
        return std::optional<std::string>(
            porTodos ? "Id=timers.target\nActiveState=active\nWants=apt-daily.timer telvane-descarga@a.timer "
                       "telvane-descarga-red@sur.timer telvane-descarga.timer telvane-descarga@rota.timer\n\n"
                       "Id=telvane-descarga@b.timer\nActiveState=active\nWants=\n\n"
                       "Id=telvane-descarga@este.timer\nActiveState=active\n\n"
                       "Id=telvane-descarga@oeste.timer\nActiveState=inactive\n"
                     : "");
    };
    auto r = correr({"estaciones"});
    EXPECT_EQ(r.codigo, CodigoSalida::fallo) << "of the broken file";
    EXPECT_THAT(r.salida, testing::EndsWith(
                              "b: tiene además otro temporizador, que no es el suyo: sudo systemctl disable "
                              "--now telvane-descarga@b.timer\n"
                              "este: ya no tiene archivo, y su temporizador sigue encendido: sudo systemctl "
                              "disable --now telvane-descarga@este.timer\n"
                              "sur: ya no tiene archivo, y su temporizador sigue encendido: sudo systemctl "
                              "disable --now telvane-descarga-red@sur.timer\n"));
    EXPECT_EQ(std::ranges::count(r.salida, '\n'), 5) << r.salida;
    EXPECT_THAT(preguntado, testing::Contains("telvane-descarga-red@*.timer"));
    const auto json = nlohmann::json::parse(correr({"estaciones", "--json"}).salida);
    EXPECT_EQ(json["temporizadores_de_mas"],
              (std::vector<std::string>{"telvane-descarga@b", "telvane-descarga@este",
                                        "telvane-descarga-red@sur"}));
    // Whether its files are there or not says nothing of another folder's.
    EXPECT_THAT(listar().salida, Not(HasSubstr("disable")));
    for (const auto* uno : {"a.conf", "b.conf", "rota.conf"}) std::filesystem::remove(carpeta / uno);
    r = correr({"estaciones"});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho);
    EXPECT_THAT(r.salida, HasSubstr("a: ya no tiene archivo"));
}

// Whoever stopped it, or the machine's end, is no failure with a status that the manual explains.
TEST_F(Estaciones, ADownloadThatASignalEndedIsToldAsThat) {
    poner("a.conf", kPuertoUsb);
    systemctl = [](const std::vector<std::string>&) {
        return std::optional<std::string>(
            "Result=signal\nExecMainStartTimestamp=@1795141023\nExecMainCode=2\nExecMainStatus=15\n"
            "Id=telvane-descarga@a.service\nActiveState=failed\n");
    };
    EXPECT_THAT(listar().salida, HasSubstr("la última 2026-11-20T02:17:03Z (interrumpida, señal 15)"));
}

TEST_F(Estaciones, AFailureThatSystemdWasToldToForgetIsStillOne) {
    poner("a.conf", kPuertoUsb);
    systemctl = [](const std::vector<std::string>&) {
        return std::optional<std::string>(
            "Result=success\nExecMainStartTimestamp=@1795141023\nExecMainStatus=3\n"
            "Id=telvane-descarga@a.service\nActiveState=inactive\n");
    };
    EXPECT_THAT(listar().salida, HasSubstr("(falló, código 3)"));
}

TEST_F(Estaciones, AFolderMayHoldNone) {
    std::filesystem::create_directory(carpeta / "no");
    const auto r = correr({"estaciones", "--en", carpeta / "no"});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho);
    EXPECT_THAT(r.errores, HasSubstr("no hay archivos de estación (.conf)"));
}

TEST_F(Estaciones, AFolderThatWasNamedAndIsNoneIsAFailure) {
    for (const auto& mala : std::vector<std::string>{carpeta / "no-hay", poner("a.conf", kPuertoUsb)}) {
        const auto r = correr({"estaciones", "--en", mala});
        EXPECT_EQ(r.codigo, CodigoSalida::fallo);
        EXPECT_THAT(r.errores, HasSubstr("no se puede leer la carpeta " + mala + ": "));
        EXPECT_EQ(r.errores.find("sudo"), std::string::npos);
    }
}

TEST_F(Estaciones, TheValuesAreForWhoeverDownloads) {
    const auto archivo = poner("norte.conf", std::string(kPuertoUsb) + "OPCIONES='--perfil estricto'\n");
    const auto r = correr({"estaciones", "--valores", archivo});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho);
    EXPECT_THAT(r.salida, testing::StartsWith("NOMBRE=norte\nCOM=1=/dev/ttyUSB0\nCARPETA="));
    EXPECT_THAT(r.salida, HasSubstr("\nOPCION=--perfil\nOPCION=estricto\nDISPOSITIVO=/dev/ttyUSB0\n"));
    EXPECT_THAT(r.salida, Not(HasSubstr("PERFIL")));
    poner("norte.conf", "COM=1\n");
    EXPECT_EQ(correr({"estaciones", "--valores", archivo}).codigo, CodigoSalida::malUso);
}

// The settings of a single station are read as ever.
TEST_F(Estaciones, ASingleStationsSettingsMayBeEmptyAndTheLastOfTwoCounts) {
    const auto leer = [&](const std::string& texto) {
        return leerAjustes(poner("ajustes", texto), ClaseAjustes::nocturna);
    };
    EXPECT_EQ(leer("").nombre, "estacion");
    EXPECT_EQ(leer("NOMBRE=sur\nNOMBRE=norte\n").nombre, "norte");
    EXPECT_THAT(leer("COM=\"1=/dev/a 2=/dev/b\"\n").com, ElementsAre("1=/dev/a", "2=/dev/b"));
    EXPECT_EQ(leer("OPCIONES='--perfil estricto'\nPERFIL=ampliado\n").perfil, "");
    EXPECT_EQ(leer("OPCIONES='--perfil ampliado'\nOPCIONES='--verificar'\n").perfil, "ampliado");
    EXPECT_EQ(leer("OPCIONES='--perfil estricto'\nPERFIL=estricto\nOPCIONES=\n").perfil, "estricto");
    EXPECT_EQ(leer("PERFIL=estricto\nPERFIL=ampliado\n").perfil, "ampliado");
    EXPECT_THROW(leer("SERIE=02080050\n"), ErrorAjustes);
}

}  // namespace
}  // namespace telvane
