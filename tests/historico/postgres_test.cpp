// A server that goes away, refuses, or is not there.
#include <signal.h>

#include <array>
#include <future>

#include "historico/biblioteca_postgres.h"
#include "historico/conexion_postgres.h"
#include "tests/historico/banco_historico.h"

namespace telvane {
namespace {

using testing::HasSubstr;

std::string motivoDe(const std::function<void()>& accion) {
    try {
        accion();
    } catch (const ErrorAlmacen& error) {
        return error.what();
    }
    return "";
}

Incorporacion incorporar(Almacen& almacen, int cuantas) {
    return Archivo(almacen).incorporar(ImagenPrueba().serie(0, 0, cuantas).bytes(), {},
                                       {"prueba", Incorporada(std::chrono::seconds(1))});
}

TEST(BibliotecaPostgres, ThatIsMissingIsToldWithItsPackage) {
    EXPECT_THAT(motivoDe([] { BibliotecaPostgres("libninguna.so.5"); }),
                HasSubstr("instale el paquete libpq5"));
}

TEST(Servidor, PostgresqlThatRestartsBetweenTwoImagesIsFoundAgain) {
    ServidorPostgres servidor;
    AlmacenPostgres almacen(servidor.baseVacia("h"), true, std::chrono::seconds(1));
    EXPECT_EQ(incorporar(almacen, 10).nuevas, 10);
    servidor.derribar();
    EXPECT_THAT(motivoDe([&] { incorporar(almacen, 20); }), HasSubstr("no se puede conectar"));
    servidor.arrancar();
    EXPECT_EQ(incorporar(almacen, 20).nuevas, 10);
}

TEST(Servidor, PostgresqlThatGoesAwayInTheMiddleTakesNothing) {
    ServidorPostgres servidor;
    AlmacenPostgres almacen(servidor.baseVacia("h"), true, std::chrono::seconds(1));
    incorporar(almacen, 10);
    const auto antes = retrato(almacen);
    const auto motivo = motivoDe([&] {
        Transaccion transaccion(almacen, Almacen::Modo::escritura);
        const auto estacion = almacen.estacion("02080050").value();
        almacen.agregarFilas(estacion.id,
                             std::vector<Fila>{{kInicio + std::chrono::hours(50), registroDeMinuto(3000)}});
        servidor.derribar();
        transaccion.confirmar();
    });
    EXPECT_THAT(motivo, HasSubstr("se perdió la conexión con el servidor"));
    servidor.arrancar();
    EXPECT_EQ(retrato(almacen), antes);
    EXPECT_EQ(incorporar(almacen, 20).nuevas, 10);
}

TEST(Servidor, PostgresqlThatDoesNotLetInIsToldInSpanish) {
    auto& servidor = ServidorPostgres::unico();
    const auto motivo = [&](const std::string& url) {
        return motivoDe([&] { AlmacenPostgres(url, false, std::chrono::seconds(10)); });
    };
    EXPECT_THAT(motivo(servidor.url("no_hay")),
                HasSubstr("no se puede conectar: el servidor no tiene esa base"));
    const auto url = servidor.baseVacia("acceso");
    EXPECT_THAT(motivo(url + (url.find('?') == std::string::npos ? "?" : "&") + "user=nadie_asi"),
                HasSubstr("no se puede conectar: el servidor no acepta ese usuario"));
}

// Told of the role or the data base, which are both right.
TEST(Servidor, PostgresqlThatHasNoRoomForAnotherConnectionSaysSo) {
    auto& servidor = ServidorPostgres::unico();
    const auto base = servidor.baseVacia("plazas");
    servidor.ejecutar("plazas",
                      "CREATE ROLE con_plazas LOGIN; CREATE ROLE sin_plazas LOGIN CONNECTION LIMIT 0");
    const auto motivo = [&](const std::string& usuario) {
        return motivoDe(
            [&] { AlmacenPostgres(servidor.url("plazas", usuario), false, std::chrono::seconds(10)); });
    };
    EXPECT_THAT(motivo("sin_plazas"), HasSubstr("el servidor no admite más conexiones por ahora"));
    servidor.ejecutar("plazas", "ALTER DATABASE plazas CONNECTION LIMIT 0");
    EXPECT_THAT(motivo("con_plazas"), HasSubstr("el servidor no admite más conexiones por ahora"));
    servidor.ejecutar("postgres", "ALTER DATABASE plazas ALLOW_CONNECTIONS false");
    EXPECT_THAT(motivo("con_plazas"), HasSubstr("esa base de datos no admite conexiones"));
    servidor.ejecutar("postgres", "ALTER DATABASE plazas ALLOW_CONNECTIONS true CONNECTION LIMIT -1");
}

// Whoever administers it has it speak his language: the state is the same in each.
TEST(Servidor, PostgresqlThatRefusesInAnotherLanguageIsUnderstood) {
    const auto motivo = [](const std::string& estado, const std::string& dice) {
        return motivoDeConexion(
            "connection to server at \"servidor\" (10.0.0.2), port 5432 failed: FATAL:  " + estado + ": " +
            dice + "\nLOCATION:  auth_failed, auth.c:326\n");
    };
    EXPECT_THAT(motivo("28P01", "la autentificación password falló para el usuario «yo»"),
                HasSubstr("no acepta ese usuario o su contraseña"));
    EXPECT_THAT(motivo("28000", "no existe el rol «yo»"), HasSubstr("no acepta ese usuario"));
    EXPECT_THAT(motivo("28000", "no hay una línea en pg_hba.conf para «10.0.0.3»"),
                HasSubstr("no deja entrar ahí con ese usuario desde este equipo"));
    EXPECT_THAT(motivo("3D000", "no existe la base de datos «x»"), HasSubstr("no tiene esa base de datos"));
    EXPECT_THAT(motivo("42501", "permiso denegado a la base de datos «x»"),
                HasSubstr("no deja entrar ahí con ese usuario"));
    EXPECT_THAT(motivo("53300", "lo siento, ya tenemos demasiados clientes"),
                HasSubstr("no admite más conexiones por ahora"));
    EXPECT_THAT(motivo("55000", "la base de datos «x» no acepta conexiones"),
                HasSubstr("esa base de datos no admite conexiones"));
    EXPECT_THAT(motivo("57P03", "el sistema de base de datos está apagándose"),
                HasSubstr("el servidor está arrancando o deteniéndose: repita dentro de un momento"));
    EXPECT_EQ(motivo("XX000", "algo pasó"), "revise la dirección y el servidor, que dice: algo pasó");
}

// The server has not been asked for more than that yet.
TEST(Servidor, PostgresqlThatIsReachedButNotInCipherIsToldAsThat) {
    const auto motivo = [](const std::string& dice) {
        return motivoDeConexion("connection to server at \"servidor\" (10.0.0.2), port 5432 failed: " + dice +
                                "\n");
    };
    for (const std::string dice :
         {"root certificate file \"/nada.crt\" does not exist", "SSL error: certificate verify failed",
          "server certificate for \"servidor\" does not match host name \"10.0.0.2\"",
          "could not open certificate file \"/nada.crt\": No such file or directory",
          "private key file \"/x.key\" has group or world access; file must have permissions u=rw",
          "server does not support SSL, but SSL was required",
          "channel binding required, but server authenticated client without channel binding"})
        EXPECT_EQ(
            motivo(dice),
            "la conexión no se pudo cifrar: revise en la dirección sslmode y los certificados, con quien "
            "administra el servidor (" +
                dice + ")");
    EXPECT_EQ(motivo("Connection refused"),
              "nadie atiende ahí: revise la dirección y el puerto, y que el servidor esté en marcha");
    EXPECT_EQ(
        motivoDeConexion("could not translate host name \"SSL\" to address: Name or service not known\n"),
        "no se encuentra la máquina: revise su nombre y la red");
    EXPECT_EQ(motivo("server is not in hot standby mode"),
              "revise la dirección; la biblioteca libpq dice: server is not in hot standby mode");
    EXPECT_EQ(motivoDeConexion("definition of service \"x\" not found\n"),
              "revise la dirección; la biblioteca libpq dice: definition of service \"x\" not found");
}

// It names a file that is missing, as the library does of a socket.
TEST(Servidor, PostgresqlThatCannotLoadWhatARoleWantsIsNotToldAsOneThatIsNotThere) {
    auto& servidor = ServidorPostgres::unico();
    servidor.baseVacia("cargas");
    servidor.ejecutar("postgres",
                      "CREATE ROLE cargada LOGIN; ALTER ROLE cargada SET local_preload_libraries=nada");
    EXPECT_THAT(
        motivoDe([&] { BasePostgres(servidor.url("cargas", "cargada")); }),
        HasSubstr(
            "no se puede conectar: revise la dirección y el servidor, que dice: could not access file"));
}

TEST(Servidor, PostgresqlThatEndsWhoIsIdleOrTakesLongSaysSo) {
    auto& servidor = ServidorPostgres::unico();
    servidor.baseVacia("plazos");
    servidor.ejecutar("postgres",
                      "CREATE ROLE apurada LOGIN; ALTER ROLE apurada SET idle_session_timeout=1; CREATE ROLE "
                      "breve LOGIN; ALTER ROLE breve SET statement_timeout=1");
    const std::string kCortado =
        "el servidor cortó lo que se hacía: repita y, si vuelve a pasar, pida a quien lo administra que "
        "alargue "
        "el plazo de su usuario (";
    // Some hear of it before they ask anything.
    std::array<std::unique_ptr<BasePostgres>, 10> ociosas;
    for (auto& una : ociosas) una = std::make_unique<BasePostgres>(servidor.url("plazos", "apurada"));
    ASSERT_TRUE(esperarA([&] {
        BasePostgres mirar(servidor.url("plazos"));
        return mirar.consultar("SELECT 1 FROM pg_stat_activity WHERE usename='apurada'").filas() == 0;
    }));
    for (const auto& una : ociosas)
        EXPECT_THAT(motivoDe([&] { una->ejecutar("SELECT 1"); }), HasSubstr(kCortado));
    BasePostgres lenta(servidor.url("plazos", "breve"));
    EXPECT_THAT(motivoDe([&] { lenta.ejecutar("SELECT pg_sleep(60)"); }), HasSubstr(kCortado));
    // Between two transactions nothing is lost.
    servidor.ejecutar("postgres", "ALTER DATABASE plazos OWNER TO apurada");
    servidor.ejecutar("postgres", "ALTER ROLE apurada SET idle_session_timeout=300");
    AlmacenPostgres almacen(servidor.url("plazos", "apurada"), true, std::chrono::seconds(10));
    incorporar(almacen, 10);
    ASSERT_TRUE(esperarA([&] {
        BasePostgres mirar(servidor.url("plazos"));
        return mirar.consultar("SELECT 1 FROM pg_stat_activity WHERE usename='apurada'").filas() == 0;
    }));
    EXPECT_EQ(incorporar(almacen, 20).nuevas, 10);
}

// With one view of all that it does, the second would not see what the first has made while it waited.
TEST(Servidor, PostgresqlIsMadeByTwoAtOnceWhateverItsDefaultIsolation) {
    auto& servidor = ServidorPostgres::unico();
    const auto url = servidor.baseVacia("aislada");
    servidor.ejecutar("aislada", "ALTER DATABASE aislada SET default_transaction_isolation='serializable'");
    BasePostgres otro(url);
    otro.ejecutar("BEGIN; SELECT pg_advisory_xact_lock(hashtext('telvane'))");
    const auto hacer = [&](int cuantas) {
        AlmacenPostgres almacen(url, true, std::chrono::minutes(1));
        return incorporar(almacen, cuantas).muestras;
    };
    auto uno = std::async(std::launch::async, hacer, 10);
    auto dos = std::async(std::launch::async, hacer, 20);
    BasePostgres mirar(servidor.url("postgres"));
    EXPECT_TRUE(esperarA([&] {
        return mirar
                   .consultar(
                       "SELECT 1 FROM pg_stat_activity WHERE datname='aislada' AND wait_event_type='Lock'")
                   .filas() == 2;
    }));
    otro.ejecutar("COMMIT");
    EXPECT_EQ(uno.get(), 10);
    EXPECT_EQ(dos.get(), 20);
}

// Each of them could change what a statement means or what an answer looks like.
TEST(Servidor, PostgresqlsSettingsOfARoleChangeNothing) {
    auto& servidor = ServidorPostgres::unico();
    const auto url = servidor.baseVacia("costumbres");
    AlmacenPostgres debido(url, true, std::chrono::seconds(10));
    incorporar(debido, 10);
    incorporar(debido, 20);
    const auto retratado = retrato(debido);
    servidor.baseVacia("costumbres");
    for (const std::string ajuste :
         {"DateStyle='German,DMY'", "TimeZone='Asia/Tokyo'", "IntervalStyle='sql_standard'",
          "bytea_output=escape", "standard_conforming_strings=off", "search_path=''", "row_security=off",
          "client_encoding=latin1", "default_transaction_isolation=serializable",
          "default_transaction_deferrable=on", "transform_null_equals=on", "extra_float_digits=-15",
          "lock_timeout=1", "session_replication_role=origin", "idle_in_transaction_session_timeout=1",
          "client_min_messages=debug5"})
        servidor.ejecutar("costumbres", "ALTER DATABASE costumbres SET " + ajuste);
    AlmacenPostgres almacen(url, true, std::chrono::seconds(10));
    incorporar(almacen, 10);
    Archivo(almacen).incorporar(ImagenPrueba().serie(0, 0, 20).bytes(), {},
                                {"año.rgt", Incorporada(std::chrono::seconds(1))});
    EXPECT_EQ(retrato(almacen), retratado);
    {
        Lectura lectura(almacen);
        EXPECT_THAT(lectura.imagenes(lectura.estacion("02080050")),
                    testing::Contains(testing::Field(&FichaImagen::origen, "año.rgt")));
    }
    EXPECT_THAT(Archivo(almacen).rehacer([] {}).fallos, testing::IsEmpty());
    EXPECT_THAT(Archivo(almacen).comprobar(*AlmacenSqlite::temporal(), [] {}).lineas, testing::IsEmpty());
}

// What is in the schema is somebody's, and stays as it was.
TEST(Servidor, PostgresqlWhoseSchemaIsSomebodyElsesIsLeftAlone) {
    auto& servidor = ServidorPostgres::unico();
    const auto url = servidor.baseVacia("de_otro");
    constexpr auto kAjeno =
        "lo que hay en su esquema telvane no es de este programa: nombre otra base de datos";
    constexpr auto kOcupado = "lleva ya ese nombre en el esquema telvane: que quien lo administra lo quite";
    struct Caso {
        std::string hay;
        bool seVe = true;
    };
    for (const auto& [hay, seVe] : std::vector<Caso>{
             {"CREATE TABLE telvane.estaciones(id integer,nombre text)"},
             {"CREATE TABLE telvane.otra(a integer)"},
             {"CREATE TABLE telvane.esquema(version text)"},
             {"CREATE VIEW telvane.muestras AS SELECT 1 AS a"},
             {"CREATE SEQUENCE telvane.imagenes"},
             {"CREATE TYPE telvane.muestras AS (a integer)"},
             {"CREATE TABLE telvane.estaciones(a integer); CREATE TABLE telvane.imagenes(a integer); CREATE "
              "TABLE telvane.contenidos(a integer); CREATE TABLE telvane.muestras(a integer); CREATE TABLE "
              "telvane.testigos(a integer)"},
             // In nobody's way until the table of that name is made.
             {"CREATE TYPE telvane.estaciones AS ENUM('a')", false},
             {"CREATE DOMAIN telvane.imagenes AS integer", false}}) {
        servidor.baseVacia("de_otro");
        servidor.ejecutar("de_otro", "CREATE SCHEMA telvane; " + hay);
        BasePostgres mirar(url);
        const auto cosas = [&] {
            return mirar
                .consultar(
                    "SELECT (SELECT count(*) FROM pg_class WHERE relnamespace=n)+(SELECT count(*) FROM "
                    "pg_type WHERE typnamespace=n) FROM to_regnamespace('telvane') n")
                .entero(0, 0);
        };
        const auto antes = cosas();
        EXPECT_THAT(motivoDe([&] { AlmacenPostgres(url, true, std::chrono::seconds(10)); }),
                    HasSubstr(seVe ? kAjeno : kOcupado))
            << hay;
        EXPECT_THAT(motivoDe([&] { AlmacenPostgres(url, false, std::chrono::seconds(10)); }),
                    HasSubstr(seVe ? kAjeno : "no hay archivo histórico todavía"))
            << hay;
        if (seVe) {
            EXPECT_THAT(motivoDe([&] { AlmacenPostgres::abrirParaReponer(url, std::chrono::seconds(10)); }),
                        HasSubstr(kAjeno))
                << hay;
        }
        EXPECT_EQ(cosas(), antes) << hay;
    }
}

TEST(Servidor, PostgresqlThatLetsARoleMakeNothingSaysSo) {
    auto& servidor = ServidorPostgres::unico();
    servidor.baseVacia("sin_hacer");
    servidor.ejecutar("sin_hacer", "CREATE ROLE mirona LOGIN; CREATE SCHEMA telvane");
    const auto motivo = [&] {
        return motivoDe(
            [&] { AlmacenPostgres(servidor.url("sin_hacer", "mirona"), true, std::chrono::seconds(10)); });
    };
    constexpr auto kSinPermiso =
        "el servidor no da permiso: pídalo para el esquema telvane a quien lo administra (permission denied";
    EXPECT_THAT(motivo(), HasSubstr(kSinPermiso));
    servidor.ejecutar("sin_hacer", "GRANT USAGE ON SCHEMA telvane TO mirona");
    EXPECT_THAT(motivo(), HasSubstr(kSinPermiso));
    servidor.ejecutar("sin_hacer", "DROP SCHEMA telvane");
    EXPECT_THAT(motivo(), HasSubstr(kSinPermiso));
}

TEST(Servidor, PostgresqlTellsWhoHasNoRight) {
    auto& servidor = ServidorPostgres::unico();
    const auto url = servidor.baseVacia("permisos");
    AlmacenPostgres(url, true, std::chrono::seconds(1));
    servidor.ejecutar("permisos", "CREATE ROLE nadie_mas LOGIN");
    EXPECT_THAT(motivoDe([&] {
                    AlmacenPostgres(servidor.url("permisos", "nadie_mas"), false, std::chrono::seconds(1));
                }),
                HasSubstr("el servidor no da permiso"));
}

TEST(Servidor, PostgresqlThatOnlyLetsReadSaysSo) {
    auto& servidor = ServidorPostgres::unico();
    const auto url = servidor.baseVacia("lectura");
    AlmacenPostgres(url, true, std::chrono::seconds(1));
    servidor.ejecutar("lectura", "ALTER DATABASE lectura SET default_transaction_read_only=on");
    EXPECT_THAT(motivoDe([&] {
                    AlmacenPostgres suyo(url, false, std::chrono::seconds(1));
                    incorporar(suyo, 10);
                }),
                HasSubstr("solo dejan leer: nombre el servidor que acepta escrituras"));
}

// What a policy hides from a role is not lost, and is not told as that.
TEST(Servidor, PostgresqlThatHidesRowsIsToldAsARightThatIsMissing) {
    auto& servidor = ServidorPostgres::unico();
    const auto url = servidor.baseVacia("oculta");
    incorporar(*std::make_unique<AlmacenPostgres>(url, true, std::chrono::seconds(10)), 10);
    servidor.ejecutar("oculta",
                      "CREATE ROLE corta LOGIN; GRANT USAGE ON SCHEMA telvane TO corta; GRANT ALL ON ALL "
                      "TABLES IN SCHEMA telvane TO corta");
    AlmacenPostgres suyo(servidor.url("oculta", "corta"), false, std::chrono::seconds(10));
    const auto antes = retrato(suyo);
    for (const std::string tabla : {"contenidos", "imagenes", "estaciones", "muestras"}) {
        const auto cambiar = [&](const std::string& que) {
            servidor.ejecutar("oculta", "ALTER TABLE telvane." + tabla + " " + que + " ROW LEVEL SECURITY");
        };
        cambiar("ENABLE");
        for (const auto& accion : std::vector<std::function<void()>>{
                 [&] { Archivo(suyo).comprobar(*AlmacenSqlite::temporal(), [] {}).lineas; },
                 [&] { Archivo(suyo).rehacer([] {}); }, [&] { incorporar(suyo, 20); }})
            EXPECT_THAT(motivoDe(accion), HasSubstr("el servidor no da permiso")) << tabla;
        cambiar("DISABLE");
        EXPECT_EQ(retrato(suyo), antes) << tabla;
    }
}

TEST(Servidor, PostgresqlsSettingsReachNoTransaction) {
    auto& servidor = ServidorPostgres::unico();
    const auto url = servidor.baseVacia("ajustes");
    servidor.ejecutar("ajustes",
                      "ALTER DATABASE ajustes SET quote_all_identifiers=on; ALTER DATABASE ajustes SET "
                      "statement_timeout='1min'; ALTER DATABASE ajustes SET "
                      "idle_in_transaction_session_timeout='1min'");
    AlmacenPostgres almacen(url, true, std::chrono::seconds(10));
    servidor.ejecutar("ajustes",
                      "CREATE FUNCTION mirar() RETURNS trigger LANGUAGE plpgsql AS 'BEGIN IF "
                      "current_setting(''statement_timeout'')||current_setting(''idle_in_transaction_session_"
                      "timeout'')<>''00'' THEN RAISE ''hay plazo''; END IF; RETURN NEW; END'; CREATE TRIGGER "
                      "mirar BEFORE INSERT ON telvane.imagenes FOR EACH ROW EXECUTE FUNCTION mirar()");
    EXPECT_EQ(incorporar(almacen, 10).nuevas, 10);
    servidor.ejecutar("ajustes", "DROP TRIGGER mirar ON telvane.imagenes");
    EXPECT_THAT(Archivo(almacen).comprobar(*AlmacenSqlite::temporal(), [] {}).lineas, testing::IsEmpty());
}

TEST(Servidor, PostgresqlThatAnotherWritesToIsWaitedForAndTold) {
    auto& servidor = ServidorPostgres::unico();
    const auto url = servidor.baseVacia("ocupada");
    AlmacenPostgres una(url, true, std::chrono::seconds(1));
    AlmacenPostgres otra(url, true, std::chrono::milliseconds(50));
    una.empezar(Almacen::Modo::escritura);
    EXPECT_THAT(motivoDe([&] { incorporar(otra, 10); }), HasSubstr("otro programa escribe en él"));
    una.abandonar();
    EXPECT_EQ(incorporar(otra, 10).nuevas, 10);
}

// As whoever administers the server does while changing a table.
TEST(Servidor, PostgresqlThatAnotherHoldsForHimselfIsWaitedForNoLongerByReaders) {
    auto& servidor = ServidorPostgres::unico();
    const auto url = servidor.baseVacia("cerrada");
    AlmacenPostgres almacen(url, true, std::chrono::milliseconds(50));
    incorporar(almacen, 10);
    BasePostgres otro(url);
    for (const std::string tabla : {"estaciones", "muestras", "esquema"}) {
        otro.ejecutar("BEGIN; LOCK TABLE telvane." + tabla + " IN ACCESS EXCLUSIVE MODE");
        EXPECT_THAT(motivoDe([&] {
                        AlmacenPostgres lector(url, false, std::chrono::milliseconds(50));
                        retrato(lector);
                    }),
                    HasSubstr("otro programa escribe en él: repita cuando termine"))
            << tabla;
        otro.ejecutar("ROLLBACK");
    }
    EXPECT_NE(retrato(almacen), "");
}

TEST(Servidor, PostgresqlThatIsBeingStoppedIsToldInSpanish) {
    ServidorPostgres servidor;
    const auto url = servidor.baseVacia("h");
    // As long as somebody is there it does not stop, and lets nobody else in.
    AlmacenPostgres almacen(url, true, std::chrono::seconds(10));
    servidor.ejecutar("h",
                      "COPY (SELECT 1) TO PROGRAM 'cat >/dev/null; kill -TERM $(head -n 1 postmaster.pid)'");
    std::string motivo;
    while (motivo.empty()) motivo = motivoDe([&] { AlmacenPostgres(url, false, std::chrono::seconds(10)); });
    EXPECT_THAT(motivo, HasSubstr("el servidor se está deteniendo: repita cuando esté otra vez en marcha"));
}

TEST(Servidor, PostgresqlWhoseVersionWasSetBackIsPutRightByTheNextImage) {
    auto& servidor = ServidorPostgres::unico();
    const auto url = servidor.baseVacia("atrasada");
    incorporar(*std::make_unique<AlmacenPostgres>(url, true, std::chrono::seconds(10)), 10);
    servidor.ejecutar("atrasada", "UPDATE telvane.esquema SET version=1");
    EXPECT_THAT(motivoDe([&] { AlmacenPostgres(url, false, std::chrono::seconds(10)); }),
                HasSubstr("la pone al día el próximo incorporar"));
    AlmacenPostgres almacen(url, true, std::chrono::seconds(10));
    EXPECT_EQ(incorporar(almacen, 20).nuevas, 10);
    EXPECT_THAT(Archivo(almacen).comprobar(*AlmacenSqlite::temporal(), [] {}).lineas, testing::IsEmpty());
    servidor.ejecutar("atrasada", "UPDATE telvane.esquema SET version=1; DROP TABLE telvane.contenidos");
    EXPECT_THAT(motivoDe([&] { AlmacenPostgres(url, true, std::chrono::seconds(10)); }),
                HasSubstr("falta la tabla contenidos: recupere su copia"));
}

TEST(Servidor, PostgresqlThatAnotherWritesToIsLeftAtOnceByWhoIsInterrupted) {
    struct Interrumpido {};
    auto& servidor = ServidorPostgres::unico();
    const auto url = servidor.baseVacia("interrumpida");
    AlmacenPostgres una(url, true, std::chrono::seconds(1));
    bool interrumpir = false;  // a busy server is waited for before that as well
    AlmacenPostgres otra(url, true, std::chrono::minutes(5), [&] {
        if (interrumpir) throw Interrumpido();
    });
    una.empezar(Almacen::Modo::escritura);
    const auto inicio = std::chrono::steady_clock::now();
    interrumpir = true;
    EXPECT_THROW(otra.empezar(Almacen::Modo::escritura), Interrumpido);
    EXPECT_LT(std::chrono::steady_clock::now() - inicio, std::chrono::minutes(1));
    interrumpir = false;
    una.abandonar();
    otra.abandonar();
}

// As of a machine that hangs: its system goes on taking what is sent to it.
TEST(Servidor, PostgresqlThatStopsInTheMiddleHoldsNobodyBack) {
    struct Interrumpido {};
    auto& servidor = ServidorPostgres::unico();
    const auto url = servidor.baseVacia("parada");
    bool interrumpir = false;
    BasePostgres base(url, [&] {
        if (interrumpir) throw Interrumpido();
    });
    const auto quienAtiende = [&] {
        return static_cast<pid_t>(base.consultar("SELECT pg_backend_pid()::bigint").entero(0, 0));
    };
    for (const auto atencion : {BasePostgres::Atencion::toda, BasePostgres::Atencion::breve}) {
        interrumpir = false;
        const auto quien = quienAtiende();
        ASSERT_EQ(::kill(quien, SIGSTOP), 0);
        const auto inicio = std::chrono::steady_clock::now();
        interrumpir = atencion == BasePostgres::Atencion::toda;
        if (interrumpir) {
            EXPECT_THROW(base.ejecutar("SELECT 1", atencion), Interrumpido);
        } else {
            EXPECT_THROW(base.ejecutar("SELECT 1", atencion), ErrorAlmacen);
        }
        EXPECT_LT(std::chrono::steady_clock::now() - inicio, std::chrono::minutes(1));
        EXPECT_FALSE(base.viva());
        ::kill(quien, SIGCONT);
        base.reconectar();
    }
    EXPECT_EQ(base.consultar("SELECT 7::bigint").entero(0, 0), 7);
}

TEST(Servidor, PostgresqlTakesTwoImagesAtOnce) {
    auto& servidor = ServidorPostgres::unico();
    const auto url = servidor.baseVacia("dos");
    const auto tomar = [&](int desde) {
        AlmacenPostgres almacen(url, true, std::chrono::minutes(1));
        for (int i = 0; i < 5; ++i) {
            Archivo(almacen).incorporar(ImagenPrueba().serie(0, desde + i * 100, 100).bytes(), {},
                                        {"prueba", Incorporada(std::chrono::seconds(1))});
        }
    };
    auto otro = std::async(std::launch::async, tomar, 500);
    tomar(0);
    otro.get();
    AlmacenPostgres almacen(url, false, std::chrono::seconds(1));
    const auto estacion = almacen.estacion("02080050").value();
    EXPECT_EQ(estacion.resumen.imagenes, 10);
    EXPECT_EQ(estacion.resumen.muestras, 190);
    EXPECT_THAT(Archivo(almacen).comprobar(*AlmacenSqlite::temporal(), [] {}).lineas, testing::IsEmpty());
}

TEST(Servidor, PostgresqlThatLacksAPartIsMadeGood) {
    auto& servidor = ServidorPostgres::unico();
    const auto url = servidor.baseVacia("partes");
    AlmacenPostgres almacen(url, true, std::chrono::seconds(1));
    incorporar(almacen, 10);
    const auto antes = retrato(almacen);
    const auto defectos = [&] {
        return Archivo(almacen).comprobar(*AlmacenSqlite::temporal(), [] {}).lineas;
    };
    ASSERT_THAT(defectos(), testing::IsEmpty());
    for (const std::string cambio :
         {"DROP TABLE telvane.testigos CASCADE",
          "DROP TABLE telvane.muestras CASCADE",
          "DROP VIEW telvane.lecturas",
          "CREATE OR REPLACE VIEW telvane.lecturas AS SELECT e.nombre AS estacion, m.hora AS hora, 1 AS "
          "humedad_pct, "
          "NULL::double precision AS temperatura_c, NULL::double precision AS viento_grados, 'N' AS "
          "viento_rumbo, "
          "NULL::double precision AS viento_desde_grados, NULL::double precision AS viento_kmh, NULL::double "
          "precision "
          "AS radiacion_kw_m2, NULL::double precision AS presion_kpa, NULL::double precision AS lluvia_mm, "
          "NULL::double "
          "precision AS evaporacion_mm, false AS conflicto FROM telvane.muestras m JOIN telvane.estaciones e "
          "ON "
          "e.id=m.estacion",
          "ALTER VIEW telvane.lecturas RENAME COLUMN hora TO cuando",
          "DROP INDEX telvane.imagenes_parciales",
          "INSERT INTO telvane.muestras SELECT 9,hora,registro,cuenta FROM telvane.muestras",
          "INSERT INTO telvane.testigos VALUES(9,'2025-03-01','x',1,'y')",
          "UPDATE telvane.contenidos SET profundidad=7",
          "UPDATE telvane.contenidos SET profundidad=-1",
          "UPDATE telvane.muestras SET hora=hora+interval '0.5 second'",
          "UPDATE telvane.muestras SET registro=registro||'x'::bytea",
          "UPDATE telvane.imagenes SET reloj=reloj+interval '0.5 second'",
          "UPDATE telvane.estaciones SET desde='infinity'",
          "INSERT INTO telvane.descargas SELECT estacion,'x',now(),1,'x',NULL,false,0,0 FROM "
          "telvane.imagenes",
          "INSERT INTO telvane.descargas SELECT estacion,huella,'2026-01-01',99,'x',NULL,false,0,0 FROM "
          "telvane.imagenes",
          "INSERT INTO telvane.descargas SELECT estacion,huella,'infinity',1,'x',NULL,false,-5,0 FROM "
          "telvane.imagenes",
          "UPDATE telvane.estaciones SET incorporada='2020-01-01'",
          "UPDATE telvane.imagenes SET incorporada='2020-01-01'",
          "UPDATE telvane.imagenes SET incorporada='infinity'; UPDATE telvane.estaciones SET "
          "incorporada='infinity'",
          "UPDATE telvane.imagenes SET incorporada='4000-01-01 BC'"}) {
        servidor.ejecutar("partes", "SET client_min_messages=error; " + cambio);
        EXPECT_THAT(defectos(), testing::Not(testing::IsEmpty())) << cambio;
        EXPECT_THAT(Archivo(almacen).rehacer([] {}).fallos, testing::IsEmpty()) << cambio;
        EXPECT_THAT(defectos(), testing::IsEmpty()) << cambio;
        EXPECT_EQ(retrato(almacen), antes) << cambio;
    }
    servidor.ejecutar("partes", "DELETE FROM telvane.imagenes");
    EXPECT_THAT(defectos(), testing::Contains(HasSubstr("de 1 de sus imágenes queda el contenido")));
    EXPECT_THAT(Archivo(almacen).rehacer([] {}).fallos, testing::IsEmpty());
    EXPECT_THAT(defectos(), testing::IsEmpty());
    EXPECT_EQ(retrato(almacen), antes);

    for (const std::string cambio :
         {"DELETE FROM telvane.estaciones", "DROP TABLE telvane.estaciones CASCADE"}) {
        servidor.ejecutar("partes", "SET client_min_messages=error; " + cambio);
        EXPECT_THAT(defectos(), testing::Not(testing::IsEmpty())) << cambio;
        EXPECT_THAT(Archivo(almacen).rehacer([] {}).fallos, testing::IsEmpty()) << cambio;
        EXPECT_THAT(defectos(), testing::IsEmpty()) << cambio;
        EXPECT_EQ(retrato(almacen), antes) << cambio;
    }
    servidor.ejecutar("partes", "DROP TABLE telvane.contenidos");
    EXPECT_THAT(defectos(),
                testing::ElementsAre(HasSubstr("falta la tabla contenidos: recupere su copia; si no la "
                                               "tiene, haga rehacer")));
    EXPECT_THAT(Archivo(almacen).rehacer([] {}).fallos,
                testing::ElementsAre(HasSubstr("falta su contenido; vuelva a incorporarla")));
    incorporar(almacen, 10);
    EXPECT_THAT(defectos(), testing::IsEmpty());
    EXPECT_EQ(retrato(almacen), antes);
}

// A remedy that is told has to work.
TEST(Servidor, PostgresqlThatLostAColumnOrAKeyNamesItAndGetsItBack) {
    auto& servidor = ServidorPostgres::unico();
    const auto url = servidor.baseVacia("claves");
    AlmacenPostgres almacen(url, true, std::chrono::seconds(10));
    incorporar(almacen, 10);
    const auto antes = retrato(almacen);
    const auto defectos = [&] {
        return Archivo(almacen).comprobar(*AlmacenSqlite::temporal(), [] {}).lineas;
    };
    struct Caso {
        std::string cambio;
        std::string falta;
    };
    for (const auto& [cambio, falta] : std::vector<Caso>{
             {"ALTER TABLE telvane.muestras DROP CONSTRAINT muestras_pkey",
              "a la tabla muestras le falta su clave (estacion,hora,registro)"},
             {"ALTER TABLE telvane.muestras DROP CONSTRAINT muestras_pkey; INSERT INTO telvane.muestras "
              "SELECT "
              "estacion,hora,registro,NOT cuenta FROM telvane.muestras",
              "a la tabla muestras le falta su clave (estacion,hora,registro)"},
             {"ALTER TABLE telvane.imagenes DROP CONSTRAINT imagenes_pkey; INSERT INTO telvane.imagenes "
              "SELECT * "
              "FROM telvane.imagenes",
              "a la tabla imagenes le falta su clave (estacion,huella)"},
             {"ALTER TABLE telvane.estaciones DROP CONSTRAINT estaciones_nombre_key",
              "a la tabla estaciones le falta su clave (nombre)"},
             {"ALTER TABLE telvane.estaciones DROP CONSTRAINT estaciones_pkey",
              "a la tabla estaciones le falta su clave (id)"},
             {"ALTER TABLE telvane.contenidos DROP CONSTRAINT contenidos_pkey",
              "a la tabla contenidos le falta su clave (estacion,huella)"},
             {"ALTER TABLE telvane.descargas DROP CONSTRAINT descargas_pkey",
              "a la tabla descargas le falta su clave (estacion,imagen)"},
             {"ALTER TABLE telvane.testigos DROP CONSTRAINT testigos_pkey",
              "a la tabla testigos le falta su clave (estacion,hora,registro,ranura,imagen)"},
             {"ALTER TABLE telvane.estaciones DROP COLUMN huecos",
              "a la tabla estaciones le falta la columna huecos"},
             {"ALTER TABLE telvane.estaciones DROP COLUMN cabecera, DROP COLUMN hasta, DROP COLUMN "
              "incorporada",
              "a la tabla estaciones le falta la columna incorporada"},
             {"ALTER TABLE telvane.imagenes DROP COLUMN contenida",
              "a la tabla imagenes le falta la columna contenida"},
             {"ALTER TABLE telvane.muestras DROP COLUMN hora CASCADE",
              "a la tabla muestras le falta la columna hora"},
             {"ALTER TABLE telvane.muestras DROP COLUMN cuenta CASCADE",
              "a la tabla muestras le falta la columna cuenta"},
             {"DROP VIEW telvane.lecturas; ALTER TABLE telvane.muestras ALTER registro TYPE text USING "
              "'x'||hora",
              "la columna registro de la tabla muestras no es como este programa la hace (bytea NOT NULL)"},
             {"ALTER TABLE telvane.muestras ALTER cuenta DROP NOT NULL; UPDATE telvane.muestras SET "
              "cuenta=NULL",
              "la columna cuenta de la tabla muestras no es como este programa la hace (boolean NOT NULL)"},
             {"ALTER TABLE telvane.imagenes ALTER reloj SET NOT NULL",
              "la columna reloj de la tabla imagenes no es como este programa la hace (timestamp without "
              "time zone)"},
             {"ALTER TABLE telvane.muestras RENAME TO m2", "la tabla muestras lleva el nombre m2"}}) {
        servidor.ejecutar("claves", "SET client_min_messages=error; " + cambio);
        EXPECT_THAT(defectos(), testing::Contains(falta + ": repóngalo con rehacer").Times(1)) << cambio;
        EXPECT_THAT(Archivo(almacen).rehacer([] {}).fallos, testing::IsEmpty()) << cambio;
        EXPECT_THAT(defectos(), testing::IsEmpty()) << cambio;
        EXPECT_EQ(retrato(almacen), antes) << cambio;
    }
    servidor.ejecutar(
        "claves",
        "ALTER TABLE telvane.imagenes DROP CONSTRAINT imagenes_pkey; INSERT INTO telvane.imagenes "
        "SELECT estacion,huella,bytes,reloj,desde,hasta,incorporada,'otro',muestras,retrocesos,"
        "contenida FROM telvane.imagenes");
    EXPECT_THAT(motivoDe([&] { Archivo(almacen).rehacer([] {}); }),
                HasSubstr("a la tabla imagenes le falta su clave (estacion,huella), y tiene filas que se "
                          "contradicen: quítela con DROP TABLE telvane.imagenes, y haga rehacer"));
}

TEST(Servidor, PostgresqlGivesWhatWasRenamedItsNameBack) {
    auto& servidor = ServidorPostgres::unico();
    const auto url = servidor.baseVacia("nombres");
    AlmacenPostgres almacen(url, true, std::chrono::seconds(10));
    incorporar(almacen, 10);
    const auto antes = retrato(almacen);
    const auto defectos = [&] {
        return Archivo(almacen).comprobar(*AlmacenSqlite::temporal(), [] {}).lineas;
    };
    for (const std::string cambio :
         {"descargas RENAME COLUMN puerto TO otra", "imagenes RENAME COLUMN huella TO \"la \"\"otra\"",
          "estaciones RENAME COLUMN nombre TO otra", "contenidos RENAME COLUMN datos TO otra",
          "imagenes RENAME TO \"Las fotos\"", "contenidos RENAME TO otra", "descargas RENAME TO otra",
          "estaciones RENAME TO otra"}) {
        servidor.ejecutar("nombres", "ALTER TABLE telvane." + cambio);
        EXPECT_THAT(defectos(), testing::AllOf(testing::Not(testing::IsEmpty()),
                                               testing::Each(testing::EndsWith(": repóngalo con rehacer"))))
            << cambio;
        EXPECT_THAT(Archivo(almacen).rehacer([] {}).fallos, testing::IsEmpty()) << cambio;
        EXPECT_THAT(defectos(), testing::IsEmpty()) << cambio;
        EXPECT_EQ(retrato(almacen), antes) << cambio;
    }
}

TEST(Servidor, PostgresqlThatDoesNotSayOfWhichVersionItIsIsPutRight) {
    auto& servidor = ServidorPostgres::unico();
    const auto url = servidor.baseVacia("callada");
    incorporar(*std::make_unique<AlmacenPostgres>(url, true, std::chrono::seconds(10)), 10);
    const auto antes = retrato(*std::make_unique<AlmacenPostgres>(url, false, std::chrono::seconds(10)));
    for (const std::string cambio :
         {"DELETE FROM telvane.esquema", "DROP TABLE telvane.esquema", "UPDATE telvane.esquema SET version=0",
          "UPDATE telvane.esquema SET version=-1", "INSERT INTO telvane.esquema VALUES(1)",
          "ALTER TABLE telvane.esquema RENAME TO otra",
          "ALTER TABLE telvane.esquema RENAME COLUMN version TO otra; DELETE FROM telvane.esquema",
          "ALTER TABLE telvane.esquema ALTER version TYPE text USING 'dos'",
          "DROP TABLE telvane.esquema; DROP TABLE telvane.descargas; ALTER TABLE telvane.muestras DROP "
          "COLUMN cuenta CASCADE"}) {
        servidor.ejecutar("callada", "SET client_min_messages=error; " + cambio);
        for (const bool crear : {false, true}) {
            EXPECT_THAT(motivoDe([&] { AlmacenPostgres(url, crear, std::chrono::seconds(10)); }),
                        HasSubstr("telvane.esquema: repóngalo con rehacer"))
                << cambio;
        }
        EXPECT_THAT(
            Archivo(*AlmacenPostgres::abrirParaReponer(url, std::chrono::seconds(10))).rehacer([] {}).fallos,
            testing::IsEmpty())
            << cambio;
        AlmacenPostgres almacen(url, false, std::chrono::seconds(10));
        EXPECT_THAT(Archivo(almacen).comprobar(*AlmacenSqlite::temporal(), [] {}).lineas, testing::IsEmpty())
            << cambio;
        EXPECT_EQ(retrato(almacen), antes) << cambio;
    }
}

TEST(Servidor, PostgresqlThatLostWhatNothingTellsAgainSaysSoInSpanish) {
    auto& servidor = ServidorPostgres::unico();
    for (const auto& [tabla, columna] :
         std::vector<std::pair<std::string, std::string>>{{"imagenes", "huella"},
                                                          {"estaciones", "nombre"},
                                                          {"contenidos", "huella"},
                                                          {"descargas", "imagen"}}) {
        const auto url = servidor.baseVacia("perdida");
        AlmacenPostgres almacen(url, true, std::chrono::seconds(10));
        incorporar(almacen, 10);
        servidor.ejecutar("perdida", "SET client_min_messages=error; ALTER TABLE telvane." + tabla +
                                         " DROP COLUMN " + columna + " CASCADE");
        const auto falta =
            "a la tabla " + tabla + " le falta la columna " + columna + ": " +
            (tabla == "contenidos" ? "recupere su copia, o haga otro archivo con los .rgt guardados"
                                   : "quítela con DROP TABLE telvane." + tabla + ", y haga rehacer");
        EXPECT_THAT(Archivo(almacen).comprobar(*AlmacenSqlite::temporal(), [] {}).lineas,
                    testing::Contains(falta));
        EXPECT_THAT(motivoDe([&] { Archivo(almacen).rehacer([] {}); }), HasSubstr(falta));
    }
}

TEST(Servidor, PostgresqlNamesWhatHangsOnItsTablesAndIsNotOurs) {
    auto& servidor = ServidorPostgres::unico();
    const auto url = servidor.baseVacia("ajenos");
    AlmacenPostgres almacen(url, true, std::chrono::seconds(10));
    incorporar(almacen, 10);
    const auto defectos = [&] {
        return Archivo(almacen).comprobar(*AlmacenSqlite::temporal(), [] {}).lineas;
    };
    servidor.ejecutar("ajenos",
                      "CREATE TABLE telvane.mias(a integer PRIMARY KEY CHECK (a>0)); CREATE INDEX rapido ON "
                      "telvane.muestras(hora); CREATE VIEW telvane.vistas AS SELECT * FROM telvane.lecturas");
    EXPECT_THAT(defectos(), testing::IsEmpty());
    struct Caso {
        std::string cambio;
        std::string dicho;
        // Stands behind it, but for the last one's.
        std::string remedio;
        bool seDice = true;
    };
    servidor.ejecutar("ajenos",
                      "CREATE FUNCTION nada() RETURNS trigger LANGUAGE plpgsql AS 'BEGIN RETURN NULL; END'");
    const auto disparador = [](const std::string& nombre) {
        return "CREATE TRIGGER " + nombre +
               " BEFORE INSERT ON telvane.muestras FOR EACH ROW EXECUTE FUNCTION nada()";
    };
    // What is told is what helps, whatever the name.
    for (const auto& [cambio, dicho, remedio, seDice] : std::vector<Caso>{
             {disparador("borrar"),
              "muestras tiene un disparador que no es de este programa, borrar: que quien administra el "
              "servidor ejecute ",
              "DROP TRIGGER \"borrar\" ON telvane.muestras"},
             {disparador("borrar"),
              "DROP TRIGGER \"borrar\" ON telvane.muestras (o, para que quede sin actuar, ",
              "ALTER TABLE telvane.muestras DISABLE TRIGGER \"borrar\""},
             {disparador("\"a\"\"; DROP TABLE telvane.muestras; --\""), "ejecute ",
              "DROP TRIGGER \"a\"\"; DROP TABLE telvane.muestras; --\" ON telvane.muestras"},
             {disparador("\"tres\nlíneas\\\u202E\"\"\u0085\""), "ejecute ",
              "DROP TRIGGER U&\"tres\\+00000Alíneas\\+00005C\\+00202E\"\"\\+000085\" ON telvane.muestras"},
             {"CREATE TRIGGER alli INSTEAD OF INSERT ON telvane.lecturas FOR EACH ROW EXECUTE FUNCTION "
              "nada()",
              "lecturas tiene un disparador que no es de este programa, alli: que quien administra el "
              "servidor ejecute ",
              "DROP TRIGGER \"alli\" ON telvane.lecturas"},
             {"CREATE RULE callar AS ON INSERT TO telvane.testigos DO INSTEAD NOTHING",
              "testigos tiene una regla que no es de este programa, callar: que quien administra el servidor "
              "ejecute ",
              "DROP RULE \"callar\" ON telvane.testigos"},
             {"ALTER TABLE telvane.imagenes ADD CONSTRAINT pocas CHECK (muestras<99)",
              "imagenes tiene una condición que no es de este programa, pocas: que quien administra el "
              "servidor ejecute ",
              "ALTER TABLE telvane.imagenes DROP CONSTRAINT \"pocas\""},
             {"CREATE UNIQUE INDEX solo ON telvane.imagenes(origen)",
              "la tabla imagenes tiene una clave que no es de este programa, (origen): quítela con ALTER "
              "TABLE … "
              "DROP CONSTRAINT, o DROP INDEX",
              "DROP INDEX telvane.solo", false}}) {
        servidor.ejecutar("ajenos", cambio);
        const auto aviso = HasSubstr(seDice ? dicho + remedio : dicho);
        EXPECT_THAT(defectos(), testing::Contains(aviso)) << cambio;
        // What takes the rows away keeps them from being made again.
        try {
            EXPECT_THAT(Archivo(almacen).rehacer([] {}).fallos, testing::ElementsAre(aviso)) << cambio;
        } catch (const ErrorAlmacen& error) {
            EXPECT_THAT(error.what(),
                        HasSubstr("no guardó lo que se le dio: vea telvane-historico comprobar"))
                << cambio;
        }
        servidor.ejecutar("ajenos", remedio);
        EXPECT_THAT(Archivo(almacen).rehacer([] {}).fallos, testing::IsEmpty()) << cambio;
        EXPECT_THAT(defectos(), testing::IsEmpty()) << cambio;
        // One that was only disabled stands in the next one's way.
        servidor.ejecutar("ajenos",
                          "SET client_min_messages=error; DROP TRIGGER IF EXISTS borrar ON telvane.muestras");
    }
}

TEST(Servidor, PostgresqlThatLacksATableIsToldInSpanishWithWhatToDo) {
    auto& servidor = ServidorPostgres::unico();
    const auto estropeada = [&](const std::string& cambio) {
        const auto url = servidor.baseVacia("rota");
        incorporar(*std::make_unique<AlmacenPostgres>(url, true, std::chrono::seconds(1)), 10);
        servidor.ejecutar("rota", "SET client_min_messages=error; " + cambio);
        return motivoDe([&] {
            AlmacenPostgres almacen(url, true, std::chrono::seconds(1));
            incorporar(almacen, 20);
        });
    };
    for (const std::string tabla : {"muestras", "imagenes", "estaciones", "contenidos"}) {
        const auto motivo = estropeada("DROP TABLE telvane." + tabla + " CASCADE");
        EXPECT_THAT(motivo, HasSubstr("le falta una parte: vea telvane-historico comprobar")) << tabla;
    }
    EXPECT_THAT(estropeada("ALTER TABLE telvane.imagenes DROP COLUMN retrocesos"),
                HasSubstr("le falta una parte: vea telvane-historico comprobar"));
    EXPECT_THAT(estropeada("DROP TABLE telvane.esquema, telvane.contenidos"),
                HasSubstr("no dice de qué versión es, en su tabla telvane.esquema: recupere su copia"));
    EXPECT_THAT(estropeada("UPDATE telvane.esquema SET version=99"),
                HasSubstr("es de una versión más nueva (99) que la de este programa"));
}

// Whoever may make no schema is given one.
TEST(Servidor, PostgresqlWithAnEmptySchemaIsNoArchiveYet) {
    auto& servidor = ServidorPostgres::unico();
    const auto url = servidor.baseVacia("ajena");
    servidor.ejecutar(
        "ajena",
        "REVOKE CREATE ON DATABASE ajena FROM PUBLIC; CREATE ROLE archivera LOGIN; CREATE SCHEMA "
        "telvane AUTHORIZATION archivera");
    const auto suya = servidor.url("ajena", "archivera");
    EXPECT_THAT(motivoDe([&] { AlmacenPostgres(suya, false, std::chrono::seconds(1)); }),
                HasSubstr("no hay archivo histórico todavía"));
    AlmacenPostgres almacen(suya, true, std::chrono::seconds(1));
    EXPECT_EQ(incorporar(almacen, 10).nuevas, 10);
    EXPECT_THAT(Archivo(almacen).comprobar(*AlmacenSqlite::temporal(), [] {}).lineas, testing::IsEmpty());
}

// An archive in a file, as an earlier version of this program wrote it: a name's bytes as they were.
TEST(Servidor, PostgresqlTakesACopyOfImagesWhoseNamesAreNoText) {
    const CarpetaTemporal carpeta;
    const auto origen = AlmacenSqlite::abrirParaEscribir(carpeta / "h.sqlite", true, {});
    incorporar(*origen, 10);
    incorporar(*origen, 20);
    BaseSqlite(carpeta / "h.sqlite", BaseSqlite::Acceso::escritura, std::chrono::seconds(1))
        .ejecutar("UPDATE imagenes SET origen=CAST(x'61f16f' AS TEXT)");
    AlmacenPostgres central(ServidorPostgres::unico().baseVacia("nombres"), true, std::chrono::seconds(1));
    Archivo suyo(*origen);
    const auto copia = Archivo(central).copiarDe(suyo, {}, [] {});
    EXPECT_THAT(copia.fallos, testing::IsEmpty());
    EXPECT_EQ(copia.copiadas, 2U);
    Lectura lectura(central);
    EXPECT_EQ(lectura.imagenes(lectura.estacion("02080050")).front().origen, "a\uFFFDo");
}

class CopiaAPostgresql : public testing::Test {
   protected:
    CopiaAPostgresql() {
        // Of the first station the second image has a name, and its download a device, that not every data
        // base has letters for.
        for (const int cuantas : {10, 20, 30}) {
            FichaDescarga descarga;
            descarga.descargada = std::chrono::sys_days{std::chrono::year{2026} / 11 / 20};
            descarga.dispositivo = cuantas == 30 ? "/dev/日本" : "/dev/a";
            Archivo(*origen).incorporar(ImagenPrueba().serie(0, 0, cuantas).bytes(), {},
                                        {cuantas == 20 ? "日本.rgt" : "a.rgt", cuando, descarga});
        }
        Archivo(*origen).incorporar(ImagenPrueba("02080051").serie(0, 0, 10).bytes(), {}, {"b.rgt", cuando});
    }

    const Incorporada cuando{std::chrono::seconds(1)};
    const std::unique_ptr<Almacen> origen = AlmacenSqlite::temporal();
    Archivo suyo{*origen};
};

TEST_F(CopiaAPostgresql, GoesOnAfterAnImageThatIsNotTaken) {
    auto& servidor = ServidorPostgres::unico();
    servidor.ejecutar(
        "postgres",
        "CREATE DATABASE latina ENCODING 'LATIN1' TEMPLATE template0 LC_COLLATE 'C' LC_CTYPE 'C'");
    AlmacenPostgres central(servidor.url("latina"), true, std::chrono::seconds(1));
    const auto copia = Archivo(central).copiarDe(suyo, {}, [] {});
    EXPECT_EQ(copia.copiadas, 3U);
    const auto que = [](int cuantas) {
        return testing::AllOf(
            testing::StartsWith("estación 02080050: imagen " +
                                textoDe(huellaDe(ImagenPrueba().serie(0, 0, cuantas).bytes()))),
            HasSubstr("esa base de datos no guarda todas las letras: haga otra con createdb -E UTF8 -T "
                      "template0, y nómbrela"));
    };
    EXPECT_THAT(copia.fallos, testing::ElementsAre(que(20), que(30)));
    EXPECT_EQ(central.estacion("02080050")->resumen.imagenes, 2);
    EXPECT_EQ(central.estacion("02080051")->resumen.imagenes, 1);
    EXPECT_EQ(central.descargas(central.estacion("02080050")->id).size(), 1U);
}

TEST_F(CopiaAPostgresql, EndsWithTheServer) {
    ServidorPostgres servidor;
    AlmacenPostgres central(servidor.baseVacia("h"), true, std::chrono::seconds(1));
    int vez = 0;
    EXPECT_THAT(motivoDe([&] {
                    Archivo(central).copiarDe(suyo, {}, [&] {
                        if (++vez == 2) servidor.derribar();
                    });
                }),
                HasSubstr("no se puede conectar"));
    EXPECT_EQ(vez, 2);
}

TEST(Servidor, PostgresqlWhoseTableLacksAStationsPartIsTold) {
    auto& servidor = ServidorPostgres::unico();
    const auto url = servidor.baseVacia("partida");
    AlmacenPostgres almacen(url, true, std::chrono::seconds(1));
    servidor.ejecutar(
        "partida",
        "SET client_min_messages=error; DROP TABLE telvane.muestras CASCADE; CREATE TABLE "
        "telvane.muestras(estacion integer,hora timestamp,registro bytea,cuenta boolean, PRIMARY "
        "KEY(estacion,hora,registro)) PARTITION BY LIST (estacion)");
    EXPECT_THAT(motivoDe([&] { incorporar(almacen, 10); }), HasSubstr("le falta la parte de esta estación"));
    servidor.ejecutar("partida", "CREATE TABLE telvane.m1 PARTITION OF telvane.muestras DEFAULT");
    EXPECT_EQ(incorporar(almacen, 10).nuevas, 10);
}

// Station 1 here and the others in another data base, as docs/dos-maquinas.md shares them out.
void repartir(ServidorPostgres& servidor, const std::string& base, const std::string& lejos) {
    servidor.baseVacia(lejos);
    servidor.ejecutar(lejos,
                      "CREATE SCHEMA telvane; CREATE TABLE telvane.muestras(estacion integer,hora timestamp,"
                      "registro bytea,cuenta boolean,PRIMARY KEY(estacion,hora,registro))");
    servidor.ejecutar(
        base,
        "SET client_min_messages=error; CREATE EXTENSION IF NOT EXISTS postgres_fdw; DROP SERVER IF EXISTS "
        "otro CASCADE; CREATE SERVER otro FOREIGN DATA WRAPPER postgres_fdw OPTIONS(host '" +
            servidor.carpeta() + "',dbname '" + lejos +
            "'); CREATE USER MAPPING FOR telvane SERVER otro OPTIONS(user 'telvane');"
            "CREATE TEMP TABLE vista AS SELECT pg_get_viewdef('telvane.lecturas') AS sql;"
            "DROP VIEW telvane.lecturas; ALTER TABLE telvane.muestras RENAME TO muestras_uno;"
            "CREATE TABLE telvane.muestras(LIKE telvane.muestras_uno) PARTITION BY RANGE(estacion);"
            "CREATE FOREIGN TABLE telvane.muestras_dos PARTITION OF telvane.muestras FOR VALUES FROM (2) TO "
            "(MAXVALUE) SERVER otro OPTIONS(table_name 'muestras');"
            "ALTER TABLE telvane.muestras ATTACH PARTITION telvane.muestras_uno FOR VALUES FROM (MINVALUE) "
            "TO (2);"
            "DO $$ BEGIN EXECUTE (SELECT 'CREATE VIEW telvane.lecturas AS '||sql FROM vista); END $$");
}

TEST(Servidor, PostgresqlWithStationsOnAnotherServerAnswersAsOneAlone) {
    auto& servidor = ServidorPostgres::unico();
    AlmacenPostgres repartido(servidor.baseVacia("repartida"), true, std::chrono::seconds(10));
    repartir(servidor, "repartida", "lejos");
    const auto solo = AlmacenSqlite::temporal();
    // The server is asked for five thousand rows at a time: here two of one stamp stand on both sides.
    const auto otra = [](int cuantas) { return ImagenPrueba("02080051").serie(0, 0, cuantas); };
    const std::vector<std::vector<std::uint8_t>> imagenes{
        ImagenPrueba().serie(0, 0, 10).bytes(), otra(5500).bytes(),
        otra(5500).poner(4999, registroDeMinuto(49990, 7)).bytes(), otra(5510).bytes()};
    const auto tomar = [&](Almacen& almacen, const std::vector<std::uint8_t>& imagen) {
        return Archivo(almacen).incorporar(imagen, {}, {"prueba", Incorporada(std::chrono::seconds(1))});
    };
    for (const auto& imagen : imagenes)
        EXPECT_EQ(tomar(repartido, imagen).nuevas, tomar(*solo, imagen).nuevas);
    const auto debido = retrato(*solo);
    EXPECT_EQ(retrato(repartido), debido);
    const auto defectos = [&] {
        return Archivo(repartido).comprobar(*AlmacenSqlite::temporal(), [] {}).lineas;
    };
    EXPECT_THAT(defectos(), testing::IsEmpty());
    EXPECT_THAT(Archivo(repartido).rehacer([] {}).fallos, testing::IsEmpty());
    EXPECT_THAT(defectos(), testing::IsEmpty());
    EXPECT_EQ(retrato(repartido), debido);

    // The machine with the list of stations fell between the two commits: rows of an image that is not there.
    servidor.ejecutar("repartida", "CREATE TABLE telvane.antes AS SELECT * FROM telvane.estaciones");
    const auto ultima = otra(5520).bytes();
    EXPECT_EQ(tomar(repartido, ultima).nuevas, 10);
    const auto conLaUltima = retrato(repartido);
    servidor.ejecutar("repartida",
                      "DELETE FROM telvane.contenidos c USING telvane.imagenes i WHERE "
                      "i.huella=c.huella AND i.muestras=5520; DELETE FROM telvane.testigos t USING "
                      "telvane.imagenes i WHERE i.huella=t.imagen AND i.muestras=5520; DELETE FROM "
                      "telvane.imagenes WHERE muestras=5520; DELETE FROM telvane.estaciones; INSERT INTO "
                      "telvane.estaciones SELECT * FROM telvane.antes; DROP TABLE telvane.antes");
    EXPECT_THAT(defectos(), testing::Contains(HasSubstr("sobra la muestra de")));
    EXPECT_EQ(tomar(repartido, ultima).nuevas, 0);
    EXPECT_THAT(Archivo(repartido).rehacer([] {}).fallos, testing::IsEmpty());
    EXPECT_THAT(defectos(), testing::IsEmpty());
    EXPECT_EQ(retrato(repartido), conLaUltima);
}

}  // namespace
}  // namespace telvane
