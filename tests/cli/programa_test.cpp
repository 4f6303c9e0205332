// The built program on a real pty: what only a process of its own can show.
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <system_error>
#include <utility>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "link/protocolo.h"
#include "simulator/memoria_simulada.h"
#include "tests/apoyo/carpeta_temporal.h"
#include "tests/apoyo/leer_todo.h"
#include "tests/apoyo/proceso.h"
#include "tests/apoyo/saneado.h"

namespace telvane {
namespace {

namespace fs = std::filesystem;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class Programa : public testing::Test {
   protected:
    // A logger at COM1.
    void conectar(std::vector<std::string> opciones = {"--baudios", "0"}) {
        opciones.insert(opciones.begin(), {TELVANE_SIM, "--enlace", (carpeta / "COM1").string()});
        simulador = std::make_unique<Proceso>(opciones);
        ASSERT_TRUE(simulador->linea()) << simulador->errores();
    }
    std::vector<std::string> orden(std::vector<std::string> argumentos) const {
        argumentos.insert(argumentos.begin(), {TELVANE_CLI, "--com", "1=" + (carpeta / "COM1").string()});
        return argumentos;
    }
    // Once the tool has its descriptor of signals, none of them is lost.
    static bool atiendeSenales(const Proceso& proceso) {
        return esperarA([&] {
            std::error_code error;
            for (const auto& fd :
                 fs::directory_iterator(fs::path("/proc") / std::to_string(proceso.pid()) / "fd", error)) {
                if (fs::read_symlink(fd, error).string().find("signalfd") != std::string::npos) return true;
            }
            return false;
        });
    }
    // The exit status of the tool run by a shell, its arguments behind "$@".
    int porShell(const std::string& guion, const std::vector<std::string>& argumentos) {
        std::vector<std::string> todo = {"/bin/sh", "-c", guion, "sh"};
        const auto propia = orden(argumentos);
        todo.insert(todo.end(), propia.begin(), propia.end());
        Proceso proceso(todo);
        const auto estado = proceso.terminar();
        errores = proceso.errores();
        return estado.value_or(-1);
    }

    // A memory of the simulated logger in a file of this name.
    std::string guardarImagen(const std::string& nombre) const {
        std::ofstream(carpeta / nombre, std::ios::binary)
            .write(reinterpret_cast<const char*>(imagen.data()), static_cast<std::streamsize>(imagen.size()));
        return carpeta / nombre;
    }

    // Whatever the test was started with holds none of the first descriptors.
    static constexpr const char* kSinMasFlujos = "exec 3>&- 4>&- 5>&- 6>&- 7>&- 8>&- 9>&-; ";

    CarpetaTemporal temporal;
    fs::path carpeta = temporal.ruta();
    std::unique_ptr<Proceso> simulador;
    std::string errores;
    const std::vector<std::uint8_t> imagen = memoriaSimulada(Clima(7));
};

TEST_F(Programa, AClosedOutputIsAFailureAndNoFileOfOursGetsItsPlace) {
    conectar();
    EXPECT_EQ(porShell("\"$@\" >&-", {"buscar"}), 1);
    EXPECT_THAT(errores, HasSubstr("no se pudo escribir en la salida"));
    const auto base = (carpeta / "a.rgt").string();
    EXPECT_EQ(porShell("\"$@\" >&-", {"descargar", "--base", base}), 0);
    EXPECT_EQ(fs::file_size(base), kBytesMemoria);
    EXPECT_EQ(porShell("\"$@\" <&- >&- 2>&-", {"buscar"}), 1);
}

TEST_F(Programa, WhereDescriptorsRunOutNoCableIsBlamed) {
    if (saneado()) GTEST_SKIP() << "a sanitizer opens a pipe to look at an object";
    conectar();
    std::vector<int> estados;
    for (int cuantos = 4; cuantos <= 16; ++cuantos) {
        estados.push_back(
            porShell(fmt::format("{}ulimit -n {}; exec \"$@\"", kSinMasFlujos, cuantos), {"buscar"}));
        EXPECT_THAT(errores, Not(HasSubstr("cable"))) << cuantos;
        if (estados.back() != 0) {
            EXPECT_THAT(errores, HasSubstr("(ulimit -n). Suba ese límite")) << cuantos;
        }
    }
    EXPECT_NE(estados.front(), 0);
    EXPECT_EQ(estados.back(), 0);
}

// A service's or a cron job's program gets what its starter left open.
class ConFlujosCerrados : public Programa, public testing::WithParamInterface<int> {
   protected:
    // Which are closed, as the shell says it.
    static std::string cierres() {
        std::string todos;
        if ((GetParam() & 1) != 0) todos += " <&-";
        if ((GetParam() & 2) != 0) todos += " >&-";
        if ((GetParam() & 4) != 0) todos += " 2>&-";
        return "\"$@\"" + todos;
    }
    static bool cerrado(int bit) { return (GetParam() & bit) != 0; }
};

TEST_P(ConFlujosCerrados, NothingHangsAndNothingIsWrittenWhereItDoesNotBelong) {
    const auto base = guardarImagen("a.rgt");
    const auto tabla = (carpeta / "a.csv").string();
    EXPECT_EQ(porShell(cierres(), {"convertir", base, tabla}), 0);
    const auto bytes = fs::file_size(tabla);
    const auto entrada = cerrado(1) ? std::string() : " <'" + base + "'";
    EXPECT_EQ(porShell(cierres() + entrada, {"convertir", "-", tabla}), cerrado(1) ? 1 : 0);
    if (cerrado(1)) {
        EXPECT_EQ(fs::file_size(tabla), bytes) << "the old table stays";
    }
    if (cerrado(1) && !cerrado(4)) {
        EXPECT_THAT(
            errores,
            HasSubstr("no se pudo leer la entrada: está cerrada. Ábrala, por ejemplo con <archivo, y"));
    }
    EXPECT_EQ(porShell(cierres(), {"convertir", base, "-"}), cerrado(2) ? 1 : 0);
    EXPECT_EQ(porShell(cierres(), {"--help"}), cerrado(2) ? 1 : 0);
    EXPECT_EQ(fs::file_size(base), kBytesMemoria);
}

TEST_P(ConFlujosCerrados, ASimulatorTalksToItsLineOnly) {
    simulador = std::make_unique<Proceso>(std::vector<std::string>{
        "/bin/sh", "-c", "exec " + cierres(), "sh", TELVANE_SIM, "--baudios", "0", "--enlace",
        (carpeta / "COM1").string(), "--memoria", (carpeta / "m.rgt").string()});
    ASSERT_TRUE(esperarA([&] { return fs::is_symlink(carpeta / "COM1"); }));
    const auto base = (carpeta / "a.rgt").string();
    EXPECT_EQ(porShell(cierres(), {"descargar", "--base", base}), 0);
    EXPECT_EQ(fs::file_size(base), kBytesMemoria);
}

INSTANTIATE_TEST_SUITE_P(Cuales, ConFlujosCerrados, testing::Range(1, 8));

// A shell hands files over where their names cannot be compared.
TEST_F(Programa, AnInputThatComesOrAnOutputThatGoesByTheStandardStreamsIsComparedToo) {
    const auto de = guardarImagen("in.dat");
    const std::vector<std::pair<std::string, std::vector<std::string>>> casos = {
        {"\"$@\" <'" + de + "'", {"convertir", "-", de}},
        {"\"$@\" <'" + de + "'", {"convertir", "/dev/stdin", de}},
        {"\"$@\" >>'" + de + "'", {"convertir", de, "-"}},
        {"\"$@\" 1<>'" + de + "'", {"convertir", de, "/dev/stdout"}},
        {"\"$@\" <'" + de + "' >>'" + de + "'", {"convertir", "-", "-"}},
        {"\"$@\" >>'" + de + "'", {"descargar", "--base", de, "--reemplazar", "--csv", "-"}},
        {"\"$@\" >>'" + de + "'", {"descargar", "--base", "-", "--csv", de}},
    };
    for (const auto& [guion, argumentos] : casos) {
        EXPECT_EQ(porShell(guion, argumentos), 2) << guion << errores;
        const auto queda = leerTodo(de);
        EXPECT_TRUE(std::ranges::equal(imagen, queda, {}, {}, [](char c) {
            return static_cast<std::uint8_t>(c);
        })) << guion;
    }
    EXPECT_EQ(porShell("\"$@\" <'" + de + "' >'" + de + ".csv'", {"convertir", "-", "-"}), 0) << errores;
}

// What the command tells would go with the log that it replaces.
TEST_F(Programa, TheLogThatItsOutputOrItsErrorsGoToIsNoOutput) {
    const auto de = guardarImagen("in.rgt");
    const auto diario = (carpeta / "diario").string();
    const auto parcial = (carpeta / "x.rgt.parcial").string();
    const std::vector<std::pair<std::string, std::vector<std::string>>> casos = {
        {"2>>", {"convertir", de, diario}},
        {">>", {"convertir", de, diario}},
        {"2>>", {"convertir", de, "/dev/stderr"}},
        {"2>>", {"descargar", "--base", (carpeta / "x.rgt").string(), "--csv", diario}},
        {"2>>", {"descargar", "--base", diario, "--reemplazar"}},
        {"2>>", {"descargar", "--base", "/dev/stderr", "--reemplazar"}},
        {"2<>", {"descargar", "--base", diario}},
        {">>", {"descargar", "--base", diario, "--reemplazar"}},
    };
    for (const auto& [flujo, argumentos] : casos) {
        std::ofstream(diario) << "2026-11-23 noche\n";
        EXPECT_EQ(porShell("\"$@\" " + flujo + "'" + diario + "'", argumentos), 2) << flujo << errores;
        // "<>" writes over what is there, as the line asked for.
        const std::string queda = flujo == "2<>" ? "telvane-cli: " : "2026-11-23 noche\n";
        EXPECT_THAT(leerTodo(diario), testing::StartsWith(queda)) << flujo;
        EXPECT_FALSE(fs::exists(carpeta / "x.rgt"));
    }
    EXPECT_EQ(porShell("\"$@\" 2>>'" + parcial + "'", {"descargar", "--base", (carpeta / "x.rgt").string()}),
              2);
    EXPECT_THAT(leerTodo(parcial), HasSubstr("lo que la orden avisa"));
}

// What is told would stand in the middle of it.
TEST_F(Programa, WhatACommandGivesAndWhatItTellsDoNotGoToOneFile) {
    const auto de = guardarImagen("in.rgt");
    const auto en = (carpeta / "x").string();
    conectar();
    const std::vector<std::vector<std::string>> casos = {
        {"convertir", de, "-"},
        {"descargar", "--base", "-"},
        {"descargar", "--base", en + ".rgt", "--csv", "-"},
        {"descargar", "--base", en + ".rgt", "--ficha", "-"}};
    for (const auto& argumentos : casos) {
        EXPECT_EQ(porShell("\"$@\" >'" + en + "' 2>&1", argumentos), 2);
        EXPECT_THAT(leerTodo(en), HasSubstr("van al mismo archivo: dé otro a los avisos, con 2>archivo"));
        EXPECT_FALSE(fs::exists(en + ".rgt"));
    }
    // To be read, and nothing else.
    EXPECT_EQ(porShell("\"$@\" >'" + en + "' 2>&1", {"configuracion"}), 0) << leerTodo(en);
    EXPECT_EQ(porShell("\"$@\" >'" + en + "' 2>'" + en + ".log'", {"convertir", de, "-"}), 0) << errores;
}

// Images and a folder for their tables.
class ConLimites : public Programa {
   protected:
    static constexpr std::size_t kCuantas = 6;
    ConLimites() {
        fs::create_directory(carpeta / "tablas");
        for (std::size_t i = 0; i < kCuantas; ++i) {
            entradas.push_back(guardarImagen(fmt::format("{}.rgt", i)));
        }
    }
    int convertir(const std::string& limite) {
        fs::remove_all(carpeta / "tablas");
        fs::create_directory(carpeta / "tablas");
        std::vector<std::string> muchas = {"convertir", "--en", (carpeta / "tablas").string()};
        muchas.insert(muchas.end(), entradas.begin(), entradas.end());
        return porShell(kSinMasFlujos + limite + "; exec \"$@\"", muchas);
    }
    // All of them, or none and each told with its reason; nothing half made.
    void esperarTodasONinguna(int estado, const std::string& motivo) const {
        std::size_t tablas = 0;
        for (const auto& una : fs::directory_iterator(carpeta / "tablas")) {
            EXPECT_EQ(una.path().extension(), ".csv");
            ++tablas;
        }
        EXPECT_EQ(tablas, estado == 0 ? kCuantas : 0U) << errores;
        if (estado == 0) return;
        for (const auto& una : entradas) EXPECT_THAT(errores, HasSubstr(una + ": " + motivo));
    }

    std::vector<std::string> entradas;
};

TEST_F(ConLimites, WhatManyImagesNeedOfDescriptorsOneAfterTheOtherSuffices) {
    if (saneado()) GTEST_SKIP() << "a sanitizer opens a pipe to look at an object";
    for (int cuantos = 4; cuantos <= 12; ++cuantos) {
        const int estado = convertir(fmt::format("ulimit -n {}", cuantos));
        EXPECT_EQ(estado, cuantos == 4 ? 1 : 0) << cuantos << errores;
        esperarTodasONinguna(estado,
                             "la sesión no permite tantos archivos abiertos a la vez (ulimit -n). Suba ese");
    }
}

struct LimiteDeMemoria {
    char letra;  // of ulimit
    int desde;   // kB
    int hasta;
};

class ConPocaMemoria : public ConLimites, public testing::WithParamInterface<LimiteDeMemoria> {};

// With how little memory a program comes to its main() is the system's business, and with how little this one
// converts an image depends on the machine: but more of it is never worse.
TEST_P(ConPocaMemoria, WithWhatOneImageNeedsManyAreConverted) {
    if (saneado()) GTEST_SKIP() << "a sanitizer reserves more than there is";
    constexpr int kSinArrancar = 126;
    constexpr int kMuchos = 10'000;
    std::vector<int> estados;
    for (int kB = GetParam().desde; kB <= GetParam().hasta; kB += kB < kMuchos ? 100 : 500) {
        const int estado = convertir(fmt::format("ulimit -c 0; ulimit -{} {}", GetParam().letra, kB));
        estados.push_back(std::min(estado, kSinArrancar));
        if (estados.back() == kSinArrancar) continue;
        ASSERT_THAT(estados.back(), testing::AnyOf(0, 1)) << kB << errores;
        if (estados.back() == 0) {
            esperarTodasONinguna(0, "");
        } else {
            EXPECT_THAT(errores,
                        HasSubstr(fmt::format("(ulimit -{}). Suba ese límite y repita", GetParam().letra)))
                << kB;
        }
    }
    EXPECT_TRUE(std::ranges::is_sorted(estados, std::greater<>())) << testing::PrintToString(estados);
    EXPECT_EQ(estados.back(), 0);
}

INSTANTIATE_TEST_SUITE_P(Limites, ConPocaMemoria,
                         testing::Values(LimiteDeMemoria{'v', 3000, 40'000}, LimiteDeMemoria{'d', 100, 7000}),
                         [](const auto& caso) { return std::string(1, caso.param.letra); });

// The signal that a file at its limit brings would end the program without a word.
TEST_F(Programa, AFileThatTheSessionDoesNotAllowIsAFailureWithItsReason) {
    const auto base = (carpeta / "a.rgt").string();
    std::ofstream(base, std::ios::binary) << std::string(kBytesMemoria, '\0');
    EXPECT_EQ(porShell("ulimit -f 0; \"$@\"", {"convertir", base, (carpeta / "a.csv").string()}), 1);
    EXPECT_THAT(errores, HasSubstr("a.csv: pasa del tamaño que permite la sesión (ulimit -f)"));
    EXPECT_EQ(porShell("ulimit -f 100; \"$@\"", {"descargar", "--base", (carpeta / "b.rgt").string()}), 1);
    EXPECT_THAT(errores, HasSubstr("b.rgt: pasa del tamaño que permite la sesión (ulimit -f)"));
    // Of a table the memory is there already, and the same order would be refused.
    conectar();
    const auto q = (carpeta / "q").string();
    EXPECT_EQ(porShell("ulimit -f 600; \"$@\"", {"descargar", "--base", q + ".rgt", "--csv", q + ".csv"}), 1);
    EXPECT_THAT(errores, EndsWith(fmt::format("{0}.csv: pasa del tamaño que permite la sesión (ulimit -f). "
                                              "Suba ese límite y repita. No hace falta descargar otra vez: "
                                              "la memoria está entera en {0}.rgt. Haga la planilla con "
                                              "\"telvane-cli convertir {0}.rgt {0}.csv\"\n",
                                              q)));
}

TEST_F(Programa, AReaderThatGoesAwayIsAFailureAndNoSilentDeath) {
    conectar();
    EXPECT_EQ(porShell("{ \"$@\"; echo $? >" + (carpeta / "codigo").string() + "; } | head -n 1 >/dev/null",
                       {"en-linea", "--json", "--cuenta", "3"}),
              0);
    std::string codigo;
    std::ifstream(carpeta / "codigo") >> codigo;
    EXPECT_EQ(codigo, "1");
}

class Senalado : public Programa, public testing::WithParamInterface<int> {};

TEST_P(Senalado, ASignalLeavesThePartialFileAndSaysSo) {
    conectar({"--baudios", "19200"});
    const auto base = carpeta / "a.rgt";
    const auto parcial = carpeta / "a.rgt.parcial";
    Proceso proceso(orden({"descargar", "--base", base.string()}));
    ASSERT_TRUE(esperarA([&] {
        std::error_code error;
        const auto bytes = fs::file_size(parcial, error);
        return !error && bytes > 0;
    }));
    proceso.senal(GetParam());
    EXPECT_EQ(proceso.terminar(), 130);
    EXPECT_THAT(proceso.errores(), HasSubstr("a.rgt.parcial queda"));
    EXPECT_TRUE(fs::exists(parcial));
    EXPECT_FALSE(fs::exists(base));
    // The logger recovers, and so does the tool.
    Proceso despues(orden({"buscar"}));
    EXPECT_EQ(despues.terminar(), 0) << despues.errores();
}

INSTANTIATE_TEST_SUITE_P(ConCadaSenal, Senalado, testing::Values(SIGINT, SIGTERM, SIGHUP));

TEST_F(Programa, UnderNohupItOutlivesItsTerminal) {
    conectar({"--baudios", "19200"});
    const auto parcial = carpeta / "a.rgt.parcial";
    auto comando = orden({"descargar", "--base", (carpeta / "a.rgt").string()});
    comando.insert(comando.begin(), {"/bin/sh", "-c", "trap '' HUP; exec \"$@\"", "sh"});
    Proceso proceso(comando);
    const auto bloques = [&] {
        std::error_code error;
        const auto bytes = fs::file_size(parcial, error);
        return error ? 0 : bytes;
    };
    ASSERT_TRUE(esperarA([&] { return bloques() > 0; }));
    proceso.senal(SIGHUP);
    const auto antes = bloques();
    EXPECT_TRUE(esperarA([&] { return bloques() > antes + 640; }));
    proceso.senal(SIGTERM);
    EXPECT_EQ(proceso.terminar(), 130);
}

TEST_F(Programa, WhileItWaitsForItsInputASignalEndsIt) {
    int tubo[2];
    ASSERT_EQ(::pipe(tubo), 0);
    Proceso proceso({"/bin/sh", "-c", "exec \"$@\" <&" + std::to_string(tubo[0]), "sh", TELVANE_CLI,
                     "convertir", "-", (carpeta / "a.csv").string()});
    // Nothing comes through the pipe.
    ASSERT_TRUE(atiendeSenales(proceso));
    proceso.senal(SIGINT);
    EXPECT_EQ(proceso.terminar(), 130);
    ::close(tubo[0]);
    ::close(tubo[1]);
}

// A pipe holds less than the table, and nobody reads it.
TEST_F(Programa, WhileItsReaderTakesNothingASignalEndsIt) {
    const auto base = guardarImagen("a.rgt");
    int tubo[2];
    ASSERT_EQ(::pipe(tubo), 0);
    Proceso proceso({"/bin/sh", "-c", "exec \"$@\" >&" + std::to_string(tubo[1]), "sh", TELVANE_CLI,
                     "convertir", base, "-"});
    ASSERT_TRUE(atiendeSenales(proceso));
    proceso.senal(SIGTERM);
    EXPECT_EQ(proceso.terminar(), 130);
    EXPECT_THAT(proceso.errores(), HasSubstr("interrumpido"));
    ::close(tubo[0]);
    ::close(tubo[1]);
}

// A terminal of the tool's own, whose window the user closes.
class EnTerminal : public Programa {
   protected:
    EnTerminal() : maestro(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
        if (maestro < 0 || ::grantpt(maestro) != 0 || ::unlockpt(maestro) != 0)
            throw std::system_error(errno, std::generic_category(), "pty");
    }
    ~EnTerminal() override { cerrar(); }
    void cerrar() {
        if (maestro >= 0) ::close(std::exchange(maestro, -1));
    }
    std::unique_ptr<Proceso> correr(const std::vector<std::string>& argumentos) {
        const std::string terminal = ::ptsname(maestro);
        std::vector<std::string> todo = {"/bin/sh", "-c", "t=$1; shift; exec setsid -c \"$@\" <$t >$t 2>$t",
                                         "sh", terminal};
        const auto propia = orden(argumentos);
        todo.insert(todo.end(), propia.begin(), propia.end());
        return std::make_unique<Proceso>(todo);
    }
    // What the user sees, up to this text.
    bool leerHasta(const std::string& texto) {
        while (visto.find(texto) == std::string::npos) {
            pollfd sondeo{maestro, POLLIN, 0};
            if (::poll(&sondeo, 1, static_cast<int>(Proceso::kPlazo.count())) <= 0) return false;
            std::array<char, 4096> trozo;
            const auto n = ::read(maestro, trozo.data(), trozo.size());
            if (n <= 0) return false;
            visto.append(trozo.data(), static_cast<std::size_t>(n));
        }
        return true;
    }

    int maestro;
    std::string visto;
};

TEST_F(EnTerminal, AClosedTerminalEndsADownloadAndKeepsWhatCame) {
    conectar({"--baudios", "19200"});
    const auto proceso = correr({"descargar", "--base", (carpeta / "a.rgt").string()});
    ASSERT_TRUE(leerHasta("se descarga la memoria")) << visto;
    ASSERT_TRUE(esperarA([&] {
        std::error_code error;
        const auto bytes = fs::file_size(carpeta / "a.rgt.parcial", error);
        return !error && bytes > 0;
    }));
    cerrar();
    EXPECT_EQ(proceso->terminar(), 130);
    EXPECT_EQ(fs::file_size(carpeta / "a.rgt.parcial") % 64, 0U);
}

// Its own terminal is where the user reads, and no logger.
TEST_F(EnTerminal, TheOwnTerminalIsRefusedAsAPortAndKeepsItsSettings) {
    termios antes{};
    ASSERT_EQ(::tcgetattr(maestro, &antes), 0);
    const std::string terminal = ::ptsname(maestro);
    for (const auto& nombre : {terminal, std::string("/dev/tty")}) {
        Proceso proceso({"/bin/sh", "-c", "t=$1; shift; exec setsid -c \"$@\" <$t >$t", "sh", terminal,
                         TELVANE_CLI, "--com", "1=" + nombre, "buscar"});
        EXPECT_EQ(proceso.terminar(), 3);
        EXPECT_THAT(proceso.errores(), HasSubstr(nombre + " es la terminal de este programa"));
        EXPECT_THAT(proceso.errores(), Not(HasSubstr("revise el cable")));
    }
    termios despues{};
    ASSERT_EQ(::tcgetattr(maestro, &despues), 0);
    EXPECT_EQ(despues.c_lflag, antes.c_lflag);
    EXPECT_EQ(despues.c_oflag, antes.c_oflag);
}

TEST_F(EnTerminal, AClosedTerminalEndsTheSearch) {
    conectar({"--baudios", "0", "--fallo", "sonda:byte=0:silencio"});
    const auto busqueda = correr({"buscar"});
    ASSERT_TRUE(leerHasta("Buscando el registrador en COM1")) << visto;
    cerrar();
    EXPECT_EQ(busqueda->terminar(), 130);
}

TEST_F(EnTerminal, AClosedTerminalEndsTheLiveReadings) {
    conectar();
    const auto lecturas = correr({"en-linea", "--cada", "60"});
    ASSERT_TRUE(leerHasta("[RH%]")) << visto;
    cerrar();
    EXPECT_EQ(lecturas->terminar(), 130);
}

TEST_F(Programa, APulledAdapterIsToldAtOnceAndReadAgainWhenItIsBack) {
    conectar({"--baudios", "0", "--fallo", "lectura:byte=50:colgar"});
    Proceso proceso(orden({"configuracion"}));
    EXPECT_EQ(proceso.terminar(), 0) << proceso.errores();
    EXPECT_THAT(proceso.errores(), HasSubstr("ha desaparecido"));
}

// The last byte of each answer comes long after the others: it must not become the first of the next.
TEST_F(Programa, LiveReadingsStayInStepThoughTheLastByteComesLate) {
    conectar({"--baudios", "0", "--fallo", "en-linea:byte=30:siempre:demora=500"});
    Proceso proceso(orden({"en-linea", "--json", "--cuenta", "4"}));
    EXPECT_EQ(proceso.terminar(), 0) << proceso.errores();
    EXPECT_THAT(proceso.errores(), Not(HasSubstr("insiste")));
    EXPECT_EQ(std::ranges::count(proceso.salida(), '\n'), 4);
    EXPECT_THAT(proceso.salida(), Not(HasSubstr("\"humedad\":-")));
}

TEST_F(Programa, ASecondRunIsToldWhoHasThePort) {
    conectar({"--baudios", "19200"});
    Proceso primero(orden({"en-linea"}));
    ASSERT_TRUE(primero.linea());
    Proceso segundo(orden({"buscar"}));
    EXPECT_EQ(segundo.terminar(), 3);
    EXPECT_THAT(segundo.errores(), HasSubstr("está en uso por otro programa"));
    Proceso puertos(orden({"puertos"}));
    EXPECT_EQ(puertos.terminar(), 0);
    EXPECT_THAT(puertos.salida(), HasSubstr("telvane-cli (pid " + std::to_string(primero.pid()) + ")"));
    primero.senal(SIGTERM);
    EXPECT_EQ(primero.terminar(), 130);
}

}  // namespace
}  // namespace telvane
