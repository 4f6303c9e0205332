// The built program: killed, at odds with the disk, and beside another one.
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <regex>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "historico/almacen_postgres.h"
#include "historico/postgres.h"
#include "platform/descriptor.h"
#include "tests/apoyo/carpeta_temporal.h"
#include "tests/apoyo/disco_chico.h"
#include "tests/apoyo/leer_todo.h"
#include "tests/apoyo/proceso.h"
#include "tests/apoyo/saneado.h"
#include "tests/historico/imagen_prueba.h"
#include "tests/historico/servidor_postgres.h"

namespace telvane {
namespace {

class Programa : public testing::Test {
   protected:
    std::string guardar(const std::string& nombre, const std::vector<std::uint8_t>& bytes) {
        std::ofstream(carpeta / nombre, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        return carpeta / nombre;
    }
    std::vector<std::string> orden(std::vector<std::string> resto) {
        resto.insert(resto.begin(), {TELVANE_HISTORICO, "--en", carpeta / "h.sqlite"});
        return resto;
    }

    CarpetaTemporal carpeta;
};

// A command that is killed, or whose disk fails.
class Corte : public Programa, public testing::WithParamInterface<const char*> {};
INSTANTIATE_TEST_SUITE_P(De, Corte, testing::Values("incorporar", "migrar", "comprobar", "rehacer", "copiar"),
                         [](const auto& orden) { return std::string(orden.param); });

TEST_P(Corte, LeavesWhatWasOrWhatIsToBeAndTheNextOneSucceeds) {
    const auto primera = guardar("a.rgt", ImagenPrueba().serie(0, 0, 3000).bytes());
    const auto segunda =
        guardar("b.rgt", ImagenPrueba().reloj(kInicio + std::chrono::hours(24)).serie(0, 0, 3144).bytes());
    // TELVANE_CORTES: how many of each call, or todas.
    const char* pedidas = std::getenv("TELVANE_CORTES");
    Proceso guion({"/bin/bash", GUION_MUERTE, TELVANE_HISTORICO, GetParam(), primera, segunda,
                   pedidas != nullptr ? pedidas : "1"});
    const auto plazo = pedidas != nullptr ? std::chrono::hours(1) : std::chrono::seconds(280);
    EXPECT_EQ(guion.terminar(plazo), 0) << guion.salida() << guion.errores();
}

TEST_F(Programa, OnAFullDiskNothingIsLostAndTheNextOneSucceeds) {
    const DiscoChico disco(carpeta / "disco", "1m");
    if (!disco.montado()) GTEST_SKIP() << "sin permiso para montar";
    const std::string archivo = carpeta / "disco" / "h.sqlite";
    const auto correr = [&](const std::vector<std::string>& resto) {
        std::vector<std::string> toda = {TELVANE_HISTORICO, "--en", archivo};
        toda.insert(toda.end(), resto.begin(), resto.end());
        Proceso proceso(toda);
        const auto codigo = proceso.terminar().value_or(-1);
        return std::pair(codigo, proceso.salida() + proceso.errores());
    };
    const auto primera = guardar("a.rgt", ImagenPrueba().serie(0, 0, 1000).bytes());
    const auto segunda = guardar("b.rgt", ImagenPrueba().serie(0, 100'000, 8000).bytes());
    ASSERT_EQ(correr({"incorporar", primera}).first, 0);
    const auto antes = correr({"estado"});
    {
        std::ofstream relleno(carpeta / "disco" / "relleno", std::ios::binary);
        const std::string pagina(4096, 'x');
        while (relleno.write(pagina.data(), static_cast<std::streamsize>(pagina.size())).flush()) {
        }
    }
    const auto llena = correr({"incorporar", segunda});
    EXPECT_EQ(llena.first, 1);
    EXPECT_NE(llena.second.find("no queda espacio en el disco"), std::string::npos) << llena.second;
    EXPECT_EQ(correr({"estado"}), antes);
    EXPECT_EQ(correr({"comprobar"}), std::pair(0, std::string("El archivo está entero.\n")));
    std::filesystem::remove(carpeta / "disco" / "relleno");
    EXPECT_EQ(correr({"incorporar", segunda}).first, 0);
    EXPECT_EQ(correr({"comprobar"}).first, 0);
}

TEST_F(Programa, AnInterruptEndsTheWaitForAServersLock) {
    auto& servidor = ServidorPostgres::unico();
    const auto url = servidor.baseVacia("interrupcion");
    AlmacenPostgres otro(url, true, std::chrono::seconds(1));
    otro.empezar(Almacen::Modo::escritura);
    Proceso proceso({TELVANE_HISTORICO, "--en", url, "incorporar",
                     guardar("a.rgt", ImagenPrueba().serie(0, 0, 10).bytes())});
    ASSERT_TRUE(esperarA([&] { return servidor.alguienEspera("interrupcion"); }));
    proceso.senal(SIGINT);
    EXPECT_EQ(proceso.terminar(), 130) << proceso.errores();
    otro.abandonar();
}

// A server that takes the connection and never says a word.
TEST_F(Programa, AnInterruptEndsTheWaitForAServerThatIsMute) {
    const std::string mudo = carpeta / ".s.PGSQL.5432";
    const Descriptor escucha(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un direccion{};
    direccion.sun_family = AF_UNIX;
    ASSERT_LT(mudo.size(), sizeof direccion.sun_path);
    mudo.copy(direccion.sun_path, mudo.size());
    ASSERT_EQ(::bind(escucha(), reinterpret_cast<const sockaddr*>(&direccion), sizeof direccion), 0);
    ASSERT_EQ(::listen(escucha(), 1), 0);
    for (const int senal : {SIGINT, SIGTERM}) {
        Proceso proceso({TELVANE_HISTORICO, "--en",
                         "postgresql://yo@/x?connect_timeout=600&host=" + carpeta.ruta().string(), "estado"});
        const auto atender = [&] {
            pollfd llamada{escucha(), POLLIN, 0};
            EXPECT_EQ(::poll(&llamada, 1, static_cast<int>(Proceso::kPlazo.count())), 1) << proceso.errores();
            return ::accept4(escucha(), nullptr, nullptr, SOCK_CLOEXEC);
        };
        // The first one is hung up at once, and the second waits.
        const Descriptor llamada(atender());
        const Descriptor conexion(atender());
        ASSERT_GE(conexion(), 0);
        proceso.senal(senal);
        EXPECT_EQ(proceso.terminar(), 130) << proceso.errores();
    }
}

// While it waits for the samples that it writes.
TEST_F(Programa, AnInterruptedExportLeavesTheOutputThatWasThereAndNothingElse) {
    auto& servidor = ServidorPostgres::unico();
    const auto url = servidor.baseVacia("interrupcion");
    Proceso antes({TELVANE_HISTORICO, "--en", url, "incorporar",
                   guardar("a.rgt", ImagenPrueba().serie(0, 0, 10).bytes())});
    ASSERT_EQ(antes.terminar(), 0) << antes.errores();
    const auto lugar = carpeta.ruta() / "tablas";
    std::filesystem::create_directory(lugar);
    std::ofstream(lugar / "t.csv") << "lo de ayer";
    for (const int senal : {SIGINT, SIGTERM}) {
        BasePostgres otro(url, [] {});
        otro.ejecutar("BEGIN; LOCK TABLE telvane.contenidos,telvane.muestras IN ACCESS EXCLUSIVE MODE");
        Proceso proceso(
            {TELVANE_HISTORICO, "--en", url, "exportar", lugar / "t.csv", "--estacion", "02080050"});
        ASSERT_TRUE(esperarA([&] { return servidor.alguienEspera("interrupcion"); }));
        proceso.senal(senal);
        EXPECT_EQ(proceso.terminar(), 130) << proceso.errores();
        EXPECT_EQ(leerTodo(lugar / "t.csv"), "lo de ayer");
        EXPECT_EQ(std::distance(std::filesystem::directory_iterator(lugar), {}), 1);
    }
}

// English, and nothing that whoever incorporates can do anything about.
TEST_F(Programa, WhatAServerSaysWhileItLetsInReachesNobody) {
    auto& servidor = ServidorPostgres::unico();
    servidor.baseVacia("avisadora");
    servidor.ejecutar("postgres",
                      "SET client_min_messages=error; CREATE ROLE avisada LOGIN; ALTER ROLE avisada SET "
                      "client_min_messages=debug5; ALTER ROLE avisada SET default_tablespace=ninguno; ALTER "
                      "DATABASE avisadora OWNER TO avisada");
    servidor.ejecutar(
        "postgres",
        "CREATE DATABASE cotejada TEMPLATE template0 LOCALE_PROVIDER icu ICU_LOCALE 'es' LOCALE 'C'");
    servidor.ejecutar("postgres", "UPDATE pg_database SET datcollversion='1' WHERE datname='cotejada'");
    const auto base = guardar("a.rgt", ImagenPrueba().serie(0, 0, 10).bytes());
    for (const auto& url : {servidor.url("avisadora", "avisada"), servidor.url("cotejada")}) {
        Proceso proceso({TELVANE_HISTORICO, "--en", url, "incorporar", base});
        EXPECT_EQ(proceso.terminar(), 0) << url;
        EXPECT_EQ(proceso.errores(), "") << url;
    }
}

TEST_F(Programa, AFileOfPasswordsThatOthersCanReadIsToldWhereItIsMissedAndNowhereElse) {
    auto& servidor = ServidorPostgres::unico();
    const auto base = guardar("a.rgt", ImagenPrueba().serie(0, 0, 10).bytes());
    servidor.baseVacia("claves");
    servidor.ejecutar("postgres",
                      "CREATE ROLE con_clave LOGIN PASSWORD 'abracadabra'; ALTER DATABASE claves OWNER TO "
                      "con_clave");
    const std::string archivo = carpeta / ".pgpass";
    std::ofstream(archivo) << "*:*:claves:con_clave:abracadabra\n";
    const auto poner = [&](unsigned modo) {
        std::filesystem::permissions(archivo, std::filesystem::perms(modo));
    };
    const auto incorporar = [&](const std::string& entorno) {
        Proceso proceso({TELVANE_HISTORICO, "--en", servidor.url("claves", "con_clave"), "incorporar", base},
                        {entorno});
        proceso.terminar();
        EXPECT_EQ(proceso.errores().find("abracadabra"), std::string::npos);
        return proceso.errores();
    };
    const auto casa = "HOME=" + carpeta.ruta().string();
    poner(0644);
    EXPECT_EQ(incorporar(casa), "");
    servidor.ejecutar("postgres",
                      "COPY (SELECT 'local claves con_clave scram-sha-256') TO PROGRAM 'cat - pg_hba.conf "
                      ">nuevo && mv nuevo pg_hba.conf'");
    servidor.ejecutar("postgres", "SELECT pg_reload_conf()");
    ASSERT_TRUE(esperarA([&] { return !incorporar(casa).empty(); }));
    const auto dicho = [&](const std::string& cual) {
        return "telvane-historico: postgresql://con_clave@" + servidor.carpeta() + "/claves" +
               ": no se puede conectar: el servidor pide una contraseña, y " + cual +
               " no se usa: ha de ser un archivo que solo su dueño pueda leer (chmod 600)\n";
    };
    for (const unsigned modo : {0644U, 0640U, 0604U, 0660U, 0601U}) {
        poner(modo);
        EXPECT_EQ(incorporar(casa), dicho(archivo)) << modo;
    }
    EXPECT_EQ(incorporar("PGPASSFILE=" + carpeta.ruta().string()), dicho(carpeta.ruta().string()));
    poner(0600);
    EXPECT_EQ(incorporar(casa), "");
    EXPECT_EQ(incorporar("PGPASSFILE=" + archivo), "");
}

// Whoever collects them looks at any moment.
TEST_F(Programa, WhatANodeExporterReadsIsWholeAtAnyMomentAndStaysWhereTheDiskIsFull) {
    const auto incorporar = [&](const std::string& serie) {
        Proceso proceso(
            orden({"incorporar", guardar(serie + ".rgt", ImagenPrueba(serie).serie(0, 0, 10).bytes())}));
        ASSERT_EQ(proceso.terminar(), 0) << proceso.errores();
    };
    const auto lugar = carpeta.ruta() / "textos";
    std::filesystem::create_directory(lugar);
    const std::string salida = lugar / "t.prom";
    const auto escribir = [&] {
        Proceso proceso(orden({"estado", "--prometheus", salida}));
        EXPECT_EQ(proceso.terminar(), 0) << proceso.errores();
        return leerTodo(salida);
    };
    incorporar("02080050");
    const auto uno = escribir();
    incorporar("02080051");
    Proceso otro(orden({"estado", "--prometheus", salida}));
    std::string visto = uno;
    // From the one straight to the other.
    ASSERT_TRUE(esperarA([&] { return (visto = leerTodo(salida)) != uno; }));
    EXPECT_EQ(otro.terminar(), 0) << otro.errores();
    const auto dos = leerTodo(salida);
    EXPECT_EQ(visto, dos);
    incorporar("02080052");
    Proceso llena({"/bin/sh", "-c", "ulimit -f 0; exec \"$0\" --en \"$1\" estado --prometheus \"$2\"",
                   TELVANE_HISTORICO, carpeta / "h.sqlite", salida});
    EXPECT_NE(llena.terminar(), 0);
    EXPECT_EQ(leerTodo(salida), dos);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(lugar), {}), 1);
}

// SQLite does not tell what the system said.
TEST_F(Programa, WhatTheSessionsLimitOfAFileStopsIsToldByItAndNothingIsLost) {
    const auto incorporar = [&](const std::string& limite, const std::string& base) {
        Proceso proceso({"/bin/sh", "-c",
                         "ulimit -f " + limite + "; exec \"$0\" --en \"$1\" incorporar \"$2\"",
                         TELVANE_HISTORICO, carpeta / "h.sqlite", base});
        return std::pair(proceso.terminar(), proceso.errores());
    };
    const auto primera = guardar("a.rgt", ImagenPrueba().serie(0, 0, 10).bytes());
    const auto segunda = guardar("b.rgt", ImagenPrueba("02080051").serie(0, 0, 5000).bytes());
    ASSERT_EQ(incorporar("unlimited", primera).first, 0);
    for (const auto* limite : {"0", "1", "100"}) {
        const auto [estado, errores] = incorporar(limite, segunda);
        EXPECT_EQ(estado, 1) << limite;
        EXPECT_THAT(errores, testing::HasSubstr(
                                 "h.sqlite: pasa del tamaño que permite la sesión (ulimit -f). Suba ese "
                                 "límite y repita; lo que ya estaba sigue entero"))
            << limite;
    }
    EXPECT_EQ(incorporar("unlimited", segunda).first, 0);
    Proceso comprobar(orden({"comprobar"}));
    EXPECT_EQ(comprobar.terminar(), 0) << comprobar.salida();
}

// A folder for data that is none counts for nothing.
TEST_F(Programa, WithoutAnArchiveNamedItIsTheOneInThePersonalFolder) {
    const auto base = guardar("a.rgt", ImagenPrueba().serie(0, 0, 10).bytes());
    const auto en = [&](const std::string& casa, const std::string& datos) {
        std::filesystem::create_directories(carpeta.ruta() / casa);
        Proceso proceso({"/bin/sh", "-c", "cd \"$1\" && exec \"$0\" incorporar \"$2\"", TELVANE_HISTORICO,
                         carpeta / casa, base},
                        {"HOME=" + (carpeta / casa).string(), "XDG_DATA_HOME=" + datos});
        EXPECT_EQ(proceso.terminar(), 0) << proceso.errores();
        return std::filesystem::exists(carpeta.ruta() / casa / ".local/share/telvane/historico.sqlite");
    };
    EXPECT_TRUE(en("vacia", ""));
    EXPECT_TRUE(en("relativa", "datos"));
    EXPECT_FALSE(std::filesystem::exists(carpeta.ruta() / "relativa" / "datos"));
    EXPECT_FALSE(en("dicha", carpeta / "datos"));
    EXPECT_TRUE(std::filesystem::exists(carpeta.ruta() / "datos/telvane/historico.sqlite"));
    for (const auto* casa : {"-uHOME", "HOME=", "HOME=casa"}) {
        Proceso sin({"/usr/bin/env", "-uXDG_DATA_HOME", casa, TELVANE_HISTORICO, "estado"});
        EXPECT_EQ(sin.terminar(), 1) << casa;
        EXPECT_EQ(sin.errores(),
                  "telvane-historico: no se sabe dónde guardar el archivo histórico: indíquelo con --en\n")
            << casa;
    }
}

// It brings two dozen libraries along, which are most of a start.
TEST_F(Programa, StartsWithoutTheClientOfPostgresql) {
    Proceso enlazados({"/bin/sh", "-c", "LD_TRACE_LOADED_OBJECTS=1 exec \"$0\"", TELVANE_HISTORICO});
    ASSERT_EQ(enlazados.terminar(), 0);
    EXPECT_NE(enlazados.salida().find("libsqlite3"), std::string::npos);
    EXPECT_EQ(enlazados.salida().find("libpq"), std::string::npos);
}

// Whoever ends the session ends what was opened in it.
TEST_F(Programa, WhatOpensAReportHoldsNoSignalBackAndOneThatIsMissingIsTold) {
    ASSERT_EQ(
        Proceso(orden({"incorporar", guardar("a.rgt", ImagenPrueba().serie(0, 0, 10).bytes())})).terminar(),
        0);
    const auto abridor = carpeta / "xdg-open";
    const std::string huella = carpeta / "huella";
    std::ofstream(abridor)
        << "#!/bin/sh\nwhile read que valor; do case $que in SigBlk:|SigIgn:) echo $que $valor;; "
           "esac; done </proc/self/status >" +
               huella + ".a\n/bin/mv " + huella + ".a " + huella + "\n";
    std::filesystem::permissions(abridor, std::filesystem::perms::owner_all);
    const auto informe = orden({"informe", "--estacion", "02080050", carpeta / "i.html", "--abrir"});
    Proceso con(informe, {"PATH=" + carpeta.ruta().string()});
    EXPECT_EQ(con.terminar(), 0) << con.errores();
    ASSERT_TRUE(esperarA([&] { return std::filesystem::exists(huella); }));
    std::istringstream lineas(leerTodo(huella));
    std::string que;
    std::uint64_t retenidas = 1;
    std::uint64_t desoidas = 0;
    lineas >> que >> std::hex >> retenidas >> que >> desoidas;
    EXPECT_EQ(retenidas, 0U);
    EXPECT_EQ(desoidas & (1U << (SIGPIPE - 1) | 1U << (SIGXFSZ - 1)), 0U);
    Proceso sin(informe, {"PATH=/nada"});
    EXPECT_EQ(sin.terminar(), 1);
    EXPECT_THAT(sin.errores(),
                testing::HasSubstr("i.html está guardado, pero no se pudo abrir: falta xdg-open "
                                   "(paquete xdg-utils)"));
}

// It is there, and finds no room.
TEST_F(Programa, WithLittleMemoryTheClientOfPostgresqlIsNotToldAsMissing) {
    if (saneado()) GTEST_SKIP() << "a sanitizer reserves more than there is";
    for (const auto* kilobytes : {"10000", "14000", "18000", "22000", "26000"}) {
        Proceso proceso({"/bin/sh", "-c",
                         "ulimit -v \"$1\"; exec \"$0\" --en postgresql://127.0.0.1:1/y estado",
                         TELVANE_HISTORICO, kilobytes});
        EXPECT_EQ(proceso.terminar(), 1) << kilobytes;
        EXPECT_THAT(proceso.errores(), testing::Not(testing::HasSubstr("instale"))) << kilobytes;
    }
}

TEST_F(Programa, AFolderThatCannotBeReadIsToldAndTheRestIsTaken) {
    const auto cerrada = carpeta.ruta() / "cerrada";
    std::filesystem::create_directory(cerrada);
    std::filesystem::permissions(cerrada, std::filesystem::perms::none);
    auto toda =
        orden({"incorporar", cerrada.string(), guardar("a.rgt", ImagenPrueba().serie(0, 0, 10).bytes())});
    // Root reads what it likes, unless that is taken away from it.
    if (::geteuid() == 0)
        toda.insert(toda.begin(), {"/usr/bin/setpriv", "--bounding-set=-dac_override,-dac_read_search"});
    Proceso proceso(toda);
    EXPECT_EQ(proceso.terminar(), 1);
    EXPECT_NE(proceso.salida().find("a.rgt: estación 02080050, 10 muestras"), std::string::npos);
    EXPECT_NE(proceso.errores().find("cerrada: no se pudo leer la carpeta: "), std::string::npos)
        << proceso.errores();
    EXPECT_NE(proceso.errores().find("1 de 2 archivos sin incorporar"), std::string::npos);
}

TEST_F(Programa, TheStandardInputIsAnImageLikeAnother) {
    auto toda = orden({"incorporar", "-", "--json"});
    toda.insert(toda.begin(), {"/bin/sh", "-c", "exec \"$@\" <\"$0\"",
                               guardar("a.rgt", ImagenPrueba().serie(0, 0, 10).bytes())});
    Proceso incorporar(toda);
    EXPECT_EQ(incorporar.terminar(), 0) << incorporar.errores();
    EXPECT_NE(incorporar.salida().find("{\"archivo\":\"-\",\"estacion\":\"02080050\""), std::string::npos)
        << incorporar.salida();
    Proceso imagenes(orden({"imagenes", "--json"}));
    EXPECT_EQ(imagenes.terminar(), 0);
    EXPECT_NE(imagenes.salida().find("\"origen\":\"-\",\"muestras\":10"), std::string::npos)
        << imagenes.salida();
}

// Whatever an archive prints, but for when its images came.
// "1<>archivo": a shell does not look at what it leads a stream to.
TEST_F(Programa, PrintsNothingIntoTheArchiveOrIntoWhatItReads) {
    const auto imagen = guardar("a.rgt", ImagenPrueba().serie(0, 0, 50).bytes());
    const std::string archivo = carpeta / "h.sqlite";
    Proceso primero(orden({"incorporar", imagen}));
    ASSERT_EQ(primero.terminar(), 0);
    const auto lineas = std::to_array<std::string>(
        {"estado", "estado --json", "estado --prometheus -", "imagenes", "comprobar",
         "exportar - --estacion 02080050", "imagen $(sha256sum \"$2\"|cut -c1-8) -",
         "resumen --estacion 02080050 --mes 2025-03", "informe - --estacion 02080050", "rehacer",
         "incorporar \"$2\"", "copiar --a \"$1.copia\"", "no-hay", "--help"});
    const auto rehusa = [&](const std::string& linea, const std::string& flujo, const std::string& donde) {
        const auto antes = leerTodo(donde);
        Proceso proceso({"/bin/sh", "-c", "exec \"$0\" --en \"$1\" " + linea + " " + flujo + "\"$3\"",
                         TELVANE_HISTORICO, archivo, imagen, donde});
        EXPECT_EQ(proceso.terminar(), 2) << linea << flujo;
        EXPECT_NE(proceso.salida() + proceso.errores(), "") << linea << flujo;
        EXPECT_EQ(leerTodo(donde), antes) << linea << flujo;
    };
    for (const auto& linea : lineas) {
        for (const auto* flujo : {"1<>", "2<>", ">>"}) rehusa(linea, flujo, archivo);
    }
    rehusa("estado", "1<>", archivo + "-wal");
    rehusa("incorporar \"$2\"", "1<>", imagen);
    rehusa("incorporar \"$2\" no-hay.rgt", "2<>", imagen);
    rehusa("incorporar - <\"$2\"", "1<>", imagen);
    rehusa("informe /dev/null --imagen \"$2\"", "2<>", imagen);
    const auto limites = guardar("limites.ini", {'#', '\n'});
    rehusa("exportar x.otro --estacion 02080050 --calidad --limites \"$3\"", "2<>", limites);
    // An emptied one is as much the archive's.
    const auto nuevo = guardar("nuevo.sqlite", {});
    rehusa("copiar --a \"$3\"", "1<>", nuevo);
    rehusa("estado --copia \"$3\"", "1<>", nuevo);
    EXPECT_FALSE(std::filesystem::exists(archivo + ".copia"));
    Proceso entero(orden({"comprobar"}));
    EXPECT_EQ(entero.terminar(), 0);
}

// As with every option that takes a value.
TEST_F(Programa, AValueMayBeginWithOneDash) {
    Proceso primero(orden({"incorporar", guardar("a.rgt", ImagenPrueba().serie(0, 0, 50).bytes())}));
    ASSERT_EQ(primero.terminar(), 0);
    for (const auto* linea : {"--prometheus -x", "--prometheus=-x", "--prometheus=--x"}) {
        SCOPED_TRACE(linea);
        const std::string escrito = carpeta / (std::string_view(linea).ends_with("--x") ? "--x" : "-x");
        Proceso proceso({"/bin/sh", "-c",
                         "cd \"$1\" && exec \"$0\" --en h.sqlite estado " + std::string(linea),
                         TELVANE_HISTORICO, carpeta.ruta()});
        EXPECT_EQ(proceso.terminar(), 0) << proceso.errores();
        EXPECT_EQ(proceso.salida(), "");
        EXPECT_TRUE(leerTodo(escrito).starts_with("# HELP telvane_historico_muestras")) << escrito;
        std::filesystem::remove(escrito);
    }
    Proceso junta({"/bin/sh", "-c", "cd \"$1\" && exec \"$0\" --en h.sqlite estado --prometheus --x",
                   TELVANE_HISTORICO, carpeta.ruta()});
    EXPECT_EQ(junta.terminar(), 2);
    EXPECT_TRUE(junta.errores().find(
                    "--prometheus: falta su valor; uno que empieza por guion se escribe --prometheus=--x") !=
                std::string::npos)
        << junta.errores();
}

TEST_F(Programa, NothingThatItPrintsDependsOnTheOrder) {
    const auto dia = [](int cual) { return kInicio + std::chrono::hours(24 * cual); };
    // A record spoilt, a clock set back, another interval and text, and a part of a memory.
    std::vector<std::string> imagenes = {
        guardar("a.rgt", ImagenPrueba().reloj(dia(1)).serie(0, 0, 100).bytes()),
        guardar("b.rgt", ImagenPrueba()
                             .reloj(dia(2))
                             .texto(registro_config::kUbicacion, "otra")
                             .texto(registro_config::kIntervalo, "\x30")
                             .serie(0, 0, 100)
                             .poner(7, registroDeMinuto(70, 9))
                             .serie(100, 500, 50)
                             .bytes()),
        guardar("c.rgt", ImagenPrueba().reloj(dia(2)).serie(0, 0, 90).serie(90, 2000, 30).bytes(20'000))};
    const std::vector<std::vector<std::string>> ordenes = {
        {"estado"},
        {"estado", "--json"},
        {"imagenes"},
        {"imagenes", "--json"},
        {"exportar", "-", "--estacion", "02080050", "--formato", "xls"},
        {"exportar", "-", "--estacion", "02080050", "--formato", "jsonl", "--calidad", "--todo"},
        {"resumen", "--estacion", "02080050", "--mes", "2025-03"},
        {"comprobar"}};
    const std::regex cuando("[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9:]{8}Z");
    std::string primera;
    do {
        const std::string archivo = carpeta / "orden.sqlite";
        for (const auto* sufijo : {"", "-wal", "-shm"}) std::filesystem::remove(archivo + sufijo);
        const auto correr = [&](std::vector<std::string> resto) {
            resto.insert(resto.begin(), {TELVANE_HISTORICO, "--en", archivo});
            Proceso proceso(resto);
            EXPECT_EQ(proceso.terminar(), 0) << proceso.errores();
            return std::regex_replace(proceso.salida(), cuando, "");
        };
        std::vector<std::string> todas = {"incorporar"};
        todas.insert(todas.end(), imagenes.begin(), imagenes.end());
        correr(todas);
        std::string dicho;
        for (const auto& una : ordenes) dicho += correr(una);
        if (primera.empty()) primera = dicho;
        ASSERT_EQ(dicho, primera);
    } while (std::next_permutation(imagenes.begin(), imagenes.end()));
    EXPECT_NE(primera.find("otra"), std::string::npos);
}

TEST_F(Programa, TwoAtOnceBothSucceed) {
    Proceso una(orden({"incorporar", guardar("a.rgt", ImagenPrueba("02080050").serie(0, 0, 3000).bytes())}));
    Proceso otra(orden({"incorporar", guardar("b.rgt", ImagenPrueba("02080051").serie(0, 0, 3000).bytes())}));
    EXPECT_EQ(una.terminar(), 0) << una.errores();
    EXPECT_EQ(otra.terminar(), 0) << otra.errores();
    Proceso comprobar(orden({"comprobar"}));
    EXPECT_EQ(comprobar.terminar(), 0) << comprobar.salida();
}

// The example queries of the manual, as they stand there, on an archive with a conflict.
// The first block of commands under a heading.
std::vector<std::string> ordenesDelManual(const std::string& titulo) {
    std::ifstream manual(MANUAL);
    std::vector<std::string> lineas;
    std::string linea;
    while (std::getline(manual, linea) && linea != "### " + titulo) {
    }
    while (std::getline(manual, linea) && linea != "```") {
    }
    while (std::getline(manual, linea) && linea != "```") lineas.push_back(linea);
    return lineas;
}
std::vector<std::string> consultasDelManual() {
    return ordenesDelManual("Consultas");
}

// A file that SQLite cannot read any more.
class Salvamento : public Programa {
   protected:
    void SetUp() override {
        if (Proceso({"/bin/sh", "-c", "PATH=/usr/bin:/bin; sqlite3 -version"}).terminar() != 0)
            GTEST_SKIP() << "sin sqlite3 (paquete sqlite3)";
        guardar("a.rgt", ImagenPrueba().serie(0, 0, 3000).bytes());
        guardar("b.rgt", ImagenPrueba().reloj(kInicio + std::chrono::hours(24)).serie(0, 0, 3144).bytes());
        ASSERT_EQ(correr(kEnEl + "incorporar a.rgt b.rgt").first, 0);
        antes = correr(kEnEl + "estado --json");
        ASSERT_EQ(correr("rm -f historico.sqlite-*"), std::pair(0, std::string()));
    }
    // By the system's own programs, and this one.
    std::pair<int, std::string> correr(const std::string& ordenes) const {
        Proceso proceso({"/bin/sh", "-c", "PATH=$1:/usr/bin:/bin; cd \"$0\" && " + ordenes,
                         carpeta.ruta().string(),
                         std::filesystem::path(TELVANE_HISTORICO).parent_path().string()});
        const auto codigo = proceso.terminar().value_or(-1);
        return {codigo, proceso.salida() + proceso.errores()};
    }
    std::pair<int, std::string> seguirElManual(const std::string& titulo) const {
        std::string ordenes;
        for (const auto& linea : ordenesDelManual(titulo)) ordenes += linea + "\n";
        return correr(ordenes);
    }
    void borrarBytes(std::streamoff desde, std::size_t cuantos) const {
        std::fstream archivo(carpeta / "historico.sqlite", std::ios::in | std::ios::out | std::ios::binary);
        archivo.seekp(desde);
        archivo << std::string(cuantos, '\0');
    }

    static constexpr std::size_t kPagina = 4096;
    const std::string kEnEl = "telvane-historico --en historico.sqlite ";
    std::pair<int, std::string> antes;
};

TEST_F(Salvamento, WhatTheManualTellsSavesWhatIsLeftOfADamagedFile) {
    // A page of the samples.
    const auto [codigo, pagina] = correr(
        "sqlite3 historico.sqlite \"SELECT rootpage-1 FROM sqlite_master WHERE name='muestras'\"; rm -f "
        "historico.sqlite-*");
    ASSERT_EQ(codigo, 0);
    borrarBytes(std::stoi(pagina) * std::streamoff{kPagina}, kPagina);
    EXPECT_EQ(
        correr(kEnEl + "comprobar"),
        std::pair(1,
                  std::string(
                      "telvane-historico: historico.sqlite: está dañado, o el disco falla al leerlo: repita "
                      "y, si sigue, recupere su copia, o haga otro archivo con los .rgt guardados\n")));
    EXPECT_EQ(seguirElManual("Si algo se dañó"), std::pair(0, std::string("El archivo está entero.\n")));
    EXPECT_EQ(correr("telvane-historico --en salvado.sqlite estado --json"), antes);
}

// Which tables there are, and where, stands on the first page, and on one below it.
TEST_F(Salvamento, WhatTheManualTellsSavesAFileThatLostItsListOfTables) {
    constexpr std::streamoff kDondeEmpieza = 100;
    constexpr std::streamoff kPaginaDeAbajo = 108;
    const auto entero = leerTodo(carpeta / "historico.sqlite");
    ASSERT_EQ(entero[kDondeEmpieza], 5) << "the list fills more than a page";
    std::streamoff abajo = 0;
    for (const char byte : entero.substr(kPaginaDeAbajo, 4))
        abajo = abajo * 256 + static_cast<unsigned char>(byte);
    struct Caso {
        std::streamoff desde;
        std::size_t cuantos;
        std::string dicho;
    };
    for (const auto& [desde, cuantos, dicho] :
         std::vector<Caso>{{0, kPagina, "no es un archivo histórico de Telvane"},
                           {kDondeEmpieza, kPagina - kDondeEmpieza, "está dañado"},
                           {(abajo - 1) * std::streamoff{kPagina}, kPagina, "está dañado"}}) {
        SCOPED_TRACE(desde);
        ASSERT_EQ(correr("rm -f *.sqlite* *.sql").first, 0);
        std::ofstream(carpeta / "historico.sqlite", std::ios::binary) << entero;
        borrarBytes(desde, cuantos);
        const auto r = correr(kEnEl + "comprobar");
        EXPECT_EQ(r.first, 1);
        EXPECT_NE(r.second.find(dicho), std::string::npos) << r.second;
        EXPECT_EQ(correr("sqlite3 historico.sqlite .dump 2>/dev/null | grep -c INSERT").second, "0\n");
        const auto salvado = seguirElManual("Si no queda la lista de sus tablas");
        EXPECT_EQ(salvado.first, 0);
        EXPECT_NE(salvado.second.find("\nEl archivo está entero.\n"), std::string::npos) << salvado.second;
        EXPECT_EQ(correr("telvane-historico --en salvado.sqlite estado --json"), antes);
    }
}

class Consulta : public Programa, public testing::WithParamInterface<std::string> {};
INSTANTIATE_TEST_SUITE_P(DelManual, Consulta, testing::ValuesIn(consultasDelManual()), [](const auto& caso) {
    return std::to_string(caso.index) + "_" + caso.param.substr(0, caso.param.find(' '));
});

TEST_P(Consulta, AnswersAsItStands) {
    const bool conPandas = GetParam().find("pandas") != std::string::npos;
    if (conPandas && Proceso({"/usr/bin/python3", "-c", "import pandas"}).terminar() != 0) {
        GTEST_SKIP() << "sin pandas (paquete python3-pandas)";
    }
    auto imagen = ImagenPrueba().serie(0, 0, 100).poner(100, registroDeMinuto(0, 7)).bytes();
    Proceso incorporar(
        {TELVANE_HISTORICO, "--en", carpeta / "historico.sqlite", "incorporar", guardar("a.rgt", imagen)});
    ASSERT_EQ(incorporar.terminar(), 0) << incorporar.errores();
    // The system's own programs, whatever else this machine has.
    Proceso consulta(
        {"/bin/sh", "-c", "PATH=/usr/bin:/bin; cd \"$0\" && " + GetParam(), carpeta.ruta().string()});
    EXPECT_EQ(consulta.terminar(), 0);
    EXPECT_EQ(consulta.errores(), "");
    std::ifstream planilla(carpeta / "lecturas.csv");
    EXPECT_EQ(consulta.salida().empty(), planilla.is_open()) << "on the output or for a spreadsheet";
    if (std::string linea; std::getline(planilla, linea)) {
        EXPECT_EQ(linea.substr(0, linea.find("humedad")), "estacion,hora,");
        int filas = 0;
        while (std::getline(planilla, linea)) filas += linea.starts_with("02080050,2025-03-01T") ? 1 : 0;
        EXPECT_EQ(filas, 101);
    }
}

TEST(ConsultasDelManual, AreThere) {
    EXPECT_GE(consultasDelManual().size(), 6u);
    EXPECT_TRUE(std::ranges::any_of(consultasDelManual(),
                                    [](const auto& linea) { return linea.ends_with("> lecturas.csv"); }));
}

}  // namespace
}  // namespace telvane
