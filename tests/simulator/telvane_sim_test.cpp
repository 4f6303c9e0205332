// The built program on a real pty.
#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "link/protocolo.h"
#include "loggerconfig/datos_config.h"
#include "simulator/memoria_guardada.h"
#include "simulator/memoria_simulada.h"
#include "tests/apoyo/carpeta_temporal.h"
#include "tests/apoyo/leer_todo.h"
#include "tests/apoyo/proceso.h"
#include "tests/apoyo/saneado.h"
#include "tests/simulator/puerto_crudo.h"

namespace telvane {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;
using Bytes = std::vector<std::uint8_t>;

class TelvaneSim : public testing::Test {
   protected:
    std::vector<std::string> orden(std::vector<std::string> argumentos) const {
        argumentos.insert(argumentos.begin(), {TELVANE_SIM, "--enlace", enlace.string()});
        return argumentos;
    }
    // Started and ready.
    std::unique_ptr<Proceso> arrancar(const std::vector<std::string>& argumentos) const {
        auto proceso = std::make_unique<Proceso>(orden(argumentos));
        const auto linea = proceso->linea();
        EXPECT_THAT(linea.value_or(""),
                    StartsWith("telvane-sim: registrador en " + enlace.string() + " (/dev/pts/"))
            << proceso->errores();
        return proceso;
    }
    // The exit status of a run that must not serve; what it said stays in queja.
    int rechazado(const std::vector<std::string>& argumentos) {
        Proceso proceso(argumentos);
        const auto estado = proceso.terminar();
        queja = proceso.errores();
        EXPECT_THAT(proceso.salida(), IsEmpty());
        return estado.value_or(-1);
    }
    static Bytes contenido(const fs::path& ruta) {
        const auto texto = leerTodo(ruta);
        return Bytes(texto.begin(), texto.end());
    }
    void exigirSinControles() const {
        EXPECT_THAT(queja, testing::Not(testing::AnyOf(HasSubstr("\x1b"), HasSubstr("\x7f"))));
        EXPECT_THAT(queja, HasSubstr("[2Jx"));
    }
    static bool hayEnlace(const fs::path& ruta) { return fs::is_symlink(fs::symlink_status(ruta)); }

    CarpetaTemporal temporal;
    fs::path carpeta = temporal.ruta();
    fs::path enlace = carpeta / "registrador";
    std::string queja;
};

class AlTerminar : public TelvaneSim, public testing::WithParamInterface<int> {};

TEST_P(AlTerminar, AnswersTheProbeAndTakesTheLinkAwayOnTheSignal) {
    const auto proceso = arrancar({});
    PuertoCrudo puerto(enlace);
    ASSERT_TRUE(puerto.abierto());
    puerto.escribir(kSonda);
    EXPECT_THAT(puerto.leer(kBytesMarco), SizeIs(kBytesMarco));
    EXPECT_TRUE(hayEnlace(enlace));
    proceso->senal(GetParam());
    EXPECT_EQ(proceso->terminar(), 0);
    EXPECT_FALSE(hayEnlace(enlace));
}

INSTANTIATE_TEST_SUITE_P(ConCadaSenal, AlTerminar, testing::Values(SIGTERM, SIGINT, SIGHUP),
                         [](const auto& caso) { return std::string("SIG") + sigabbrev_np(caso.param); });

TEST_F(TelvaneSim, TextFromOutsideGivesTheTerminalNoOrders) {
    const std::string nombre = "\x1b[2Jx\x7f";
    EXPECT_EQ(rechazado(orden({nombre})), 2);
    exigirSinControles();
    EXPECT_EQ(rechazado(orden({"--memoria", (temporal / nombre / "m.rgt").string()})), 1);
    exigirSinControles();
}

TEST_F(TelvaneSim, ALineEndInANameSplitsNoMessage) {
    EXPECT_EQ(rechazado(orden({"--memoria", (temporal / "a\nb" / "m.rgt").string()})), 1);
    EXPECT_THAT(queja, testing::MatchesRegex("[^\n]*/a\uFFFDb[^\n]*\n"));
    EXPECT_EQ(rechazado({TELVANE_SIM, "--enlace", (temporal / "a\nb" / "x").string()}), 1);
    EXPECT_THAT(queja, testing::MatchesRegex("[^\n]*/a\uFFFDb/x[^\n]*\n"));
    EXPECT_EQ(rechazado(orden({"--fallo", "a\nb"})), 2);
    EXPECT_THAT(queja, testing::MatchesRegex("[^\n]*\"a\uFFFDb\"[^\n]*\n\\(telvane-sim --help\\)\n"));
}

TEST_F(TelvaneSim, OverwritesNoFile) {
    std::ofstream(enlace) << "valioso";
    EXPECT_EQ(rechazado(orden({})), 1);
    EXPECT_THAT(queja, HasSubstr("no es un enlace"));
    EXPECT_EQ(contenido(enlace).size(), 7u);
}

TEST_F(TelvaneSim, TakesNoOtherLoggersLinkAway) {
    const auto primero = arrancar({"--baudios", "0"});
    EXPECT_EQ(rechazado(orden({})), 1);
    EXPECT_THAT(queja, HasSubstr("otro telvane-sim atiende"));
    PuertoCrudo puerto(enlace);
    puerto.escribir(kSonda);
    EXPECT_THAT(puerto.leer(kBytesMarco), SizeIs(kBytesMarco));
}

TEST_F(TelvaneSim, ReplacesALinkThatLeadsNowhere) {
    fs::create_symlink(carpeta / "nada", enlace);
    const auto proceso = arrancar({"--baudios", "0"});
    PuertoCrudo puerto(enlace);
    EXPECT_TRUE(puerto.abierto());
}

// The number of a killed one's terminal goes to whoever asks next.
TEST_F(TelvaneSim, AfterAViolentDeathItComesBackToItsLink) {
    for (int i = 0; i < 3; ++i) {
        const auto proceso = arrancar({"--baudios", "0"});
        proceso->senal(SIGKILL);
        EXPECT_EQ(proceso->terminar(), 128 + SIGKILL);
        ASSERT_TRUE(hayEnlace(enlace));
    }
    const auto proceso = arrancar({"--baudios", "0"});
    PuertoCrudo puerto(enlace);
    puerto.escribir(kSonda);
    EXPECT_THAT(puerto.leer(kBytesMarco), SizeIs(kBytesMarco));
}

TEST_F(TelvaneSim, ReplacesTheLinkToATerminalThatNobodyServes) {
    const int ajeno = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_GE(ajeno, 0);
    fs::create_symlink(::ptsname(ajeno), enlace);
    const auto proceso = arrancar({"--baudios", "0"});
    EXPECT_NE(fs::read_symlink(enlace), fs::path(::ptsname(ajeno)));
    ::close(ajeno);
}

TEST_F(TelvaneSim, ReplacesNoLinkToAnotherDevice) {
    fs::create_symlink("/dev/null", enlace);
    EXPECT_EQ(rechazado(orden({})), 1);
    EXPECT_THAT(queja, HasSubstr("ya lleva a otro dispositivo o archivo: bórrelo o dé otro nombre"));
}

TEST_F(TelvaneSim, StandsAFloodInBoundedMemoryAndAnswersAfterwards) {
    const auto proceso = arrancar({});
    const auto paginas = [&] {
        std::size_t total = 0;
        std::size_t residentes = 0;
        std::ifstream("/proc/" + std::to_string(proceso->pid()) + "/statm") >> total >> residentes;
        return residentes;
    };
    const auto antes = paginas();
    {
        PuertoCrudo puerto(enlace);
        // Probes, each of which asks for 31 bytes.
        for (int i = 0; i < 1000; ++i) puerto.escribir(Bytes(4096, kSonda));
    }
    // 4 MB; what was written is as much again. A sanitized program keeps what it has freed.
    if (!saneado()) {
        EXPECT_LT(paginas(), antes + 1000);
    }
    PuertoCrudo puerto(enlace);
    ASSERT_TRUE(esperarA([&] {
        while (!puerto.leer(4096, 200ms).empty()) continue;
        puerto.escribir(kSonda);
        return puerto.leer(kBytesMarco + 1, 1s).size() == kBytesMarco;
    }));
}

TEST_F(TelvaneSim, ALinkInAFolderThatIsNotThereIsAFailure) {
    enlace = carpeta / "no" / "hay";
    EXPECT_EQ(rechazado(orden({})), 1);
    EXPECT_THAT(queja, testing::EndsWith("hay: no existe la carpeta " + (carpeta / "no").string() +
                                         ". Créela, o dé otra\n"));
}

TEST_F(TelvaneSim, ALinkThatCannotBeMadeIsToldWithItsReason) {
    EXPECT_EQ(rechazado({TELVANE_SIM, "--enlace", (carpeta / std::string(300, 'n')).string()}), 1);
    EXPECT_THAT(queja, HasSubstr("el nombre es demasiado largo"));
}

TEST_F(TelvaneSim, WrongUsageEndsWithTwo) {
    EXPECT_EQ(rechazado({TELVANE_SIM}), 2);
    EXPECT_THAT(queja, HasSubstr("falta --enlace"));
    EXPECT_EQ(rechazado(orden({"--serie", "123"})), 2);
    EXPECT_THAT(queja, HasSubstr("8 cifras"));
    EXPECT_EQ(rechazado(orden({"--baudios", "9600"})), 2);
    EXPECT_EQ(rechazado(orden({"--semilla", "x"})), 2);
    EXPECT_EQ(rechazado(orden({"--semilla", "4294967296"})), 2);
    EXPECT_EQ(rechazado(orden({"--fallo", "sonda:nada"})), 2);
    EXPECT_THAT(queja, HasSubstr("nada"));
    EXPECT_EQ(rechazado(orden({"--fallo", "serie:error-escritura"})), 2);
    EXPECT_THAT(queja, HasSubstr("un pseudoterminal no lo puede mostrar"));
    EXPECT_EQ(rechazado(orden({"--fallo", "serie:silencio", "--fallo", "serie:perder"})), 2);
    EXPECT_THAT(queja, HasSubstr("fallo \"serie:perder\": con \"serie:silencio\" no ocurre nunca: quite uno "
                                 "de los dos"));
    EXPECT_EQ(rechazado(orden({"--memoria", "-"})), 2);
    EXPECT_THAT(queja, HasSubstr("uno de ese nombre se escribe ./-"));
    EXPECT_EQ(rechazado(orden({"--fallo"})), 2);
    EXPECT_EQ(rechazado(orden({"--otra"})), 2);
    EXPECT_EQ(rechazado(orden({"sobra"})), 2);
    EXPECT_FALSE(hayEnlace(enlace));
}

TEST_F(TelvaneSim, TheHelpExplainsTheFaultsAndEndsWithZero) {
    Proceso proceso({TELVANE_SIM, "--help"});
    EXPECT_EQ(proceso.terminar(), 0);
    EXPECT_THAT(proceso.salida(), HasSubstr("Uso: telvane-sim"));
    EXPECT_THAT(proceso.salida(), HasSubstr("descarga:bloque=2047:byte=12:cortar"));
}

TEST_F(TelvaneSim, ServesOneAfterTheOther) {
    const auto proceso = arrancar({"--baudios", "0"});
    for (int i = 0; i < 3; ++i) {
        PuertoCrudo puerto(enlace);
        puerto.escribir(kSonda);
        EXPECT_THAT(puerto.leer(kBytesMarco), SizeIs(kBytesMarco));
    }
}

TEST_F(TelvaneSim, KeepsWhatIsWrittenToIt) {
    const auto memoria = carpeta / "base.rgt";
    {
        const auto proceso =
            arrancar({"--baudios", "0", "--memoria", memoria.string(), "--serie", "02080099"});
        EXPECT_THAT(contenido(memoria), SizeIs(kBytesMemoria));
        PuertoCrudo puerto(enlace);
        EXPECT_EQ(puerto.pedir(kApertura), kApertura);
        EXPECT_NE(puerto.pedir(kEscribirSerie), 256u);
        for (const auto byte : Bytes{0x20, 0x80, 0x05, 0x12}) EXPECT_NE(puerto.pedir(byte), 256u);
        puerto.escribir(0x12);
        EXPECT_TRUE(esperarA([&] { return contenido(memoria)[3] == 0x12; }));
        proceso->senal(SIGTERM);
        EXPECT_EQ(proceso->terminar(), 0);
    }
    const auto proceso = arrancar({"--baudios", "0", "--memoria", memoria.string()});
    PuertoCrudo puerto(enlace);
    EXPECT_EQ(puerto.pedir(kApertura), kApertura);
    EXPECT_NE(puerto.pedir(kLeerConfig), 256u);
    Bytes registro;
    unsigned byte = puerto.pedir(kApertura);
    while (byte < 256 && registro.size() < kBytesConfig - 1) {
        registro.push_back(static_cast<std::uint8_t>(byte));
        byte = puerto.pedir(static_cast<std::uint8_t>(byte));
    }
    registro.push_back(static_cast<std::uint8_t>(byte));
    puerto.escribir(static_cast<std::uint8_t>(byte));
    ASSERT_THAT(registro, SizeIs(kBytesConfig));
    EXPECT_EQ(Bytes(registro.begin(), registro.begin() + 4), (Bytes{0x20, 0x80, 0x05, 0x12}));
    EXPECT_LE(registro[registro_config::kReloj], 0x23);
}

TEST_F(TelvaneSim, WhatItCouldNotKeepIsAFailureInTheEnd) {
    const auto memoria = carpeta / "base.rgt";
    const auto escribirSerie = [&] {
        PuertoCrudo puerto(enlace);
        EXPECT_EQ(puerto.pedir(kApertura), kApertura);
        EXPECT_NE(puerto.pedir(kEscribirSerie), 256u);
        for (const auto byte : Bytes{0x20, 0x80, 0x05, 0x12}) EXPECT_NE(puerto.pedir(byte), 256u);
        puerto.escribir(0x12);
    };
    for (const bool vuelve : {false, true}) {
        fs::remove_all(memoria);
        const auto proceso = arrancar({"--baudios", "0", "--memoria", memoria.string()});
        fs::remove(memoria);
        fs::create_directory(memoria);
        escribirSerie();
        EXPECT_TRUE(esperarA([&] {
            EXPECT_FALSE(proceso->linea(1ms)) << "it says nothing but what went wrong";
            return proceso->errores().find("no se pudo guardar") != std::string::npos;
        }));
        if (vuelve) fs::remove(memoria);
        proceso->senal(SIGTERM);
        EXPECT_EQ(proceso->terminar(), vuelve ? 0 : 1);
        const auto dicho = proceso->errores();
        EXPECT_EQ(dicho.find("no se pudo guardar"), dicho.rfind("no se pudo guardar")) << dicho;
        if (vuelve) {
            EXPECT_EQ(contenido(memoria)[3], 0x12);
        }
    }
}

TEST_F(TelvaneSim, AMemoryThatIsTooLongIsRefused) {
    const auto memoria = carpeta / "larga.rgt";
    std::ofstream(memoria) << std::string(kBytesMemoria + 1, '\0');
    EXPECT_EQ(rechazado(orden({"--memoria", memoria.string()})), 1);
    EXPECT_FALSE(hayEnlace(enlace));
}

TEST_F(TelvaneSim, WhatIsNoMemoryIsNotWrittenOver) {
    const auto carta = carpeta / "carta.txt";
    std::ofstream(carta) << "valioso";
    EXPECT_EQ(rechazado(orden({"--memoria", carta})), 1);
    EXPECT_THAT(queja,
                HasSubstr("carta.txt no parece una memoria, que mide 262144 bytes o termina en .rgt: dé otro "
                          "--memoria"));
    EXPECT_EQ(leerTodo(carta), "valioso");
    // A part of a download is one, and so is what is as long as one.
    fs::rename(carta, carpeta / "a.rgt.parcial");
    fs::create_symlink("a.rgt.parcial", carpeta / "enlace a una parte");
    arrancar({"--memoria", carpeta / "enlace a una parte"});
    arrancar({"--memoria", carpeta / "a.rgt.parcial"});
    std::ofstream(carpeta / "sin nombre", std::ios::binary) << std::string(kBytesMemoria, '\xFF');
    arrancar({"--memoria", carpeta / "sin nombre"});
}

// What is written over is what a link leads to, whatever the link's own name.
TEST_F(TelvaneSim, ALinksNameMakesNoMemoryOfWhatItLeadsTo) {
    std::ofstream(carpeta / "carta.txt") << "valioso";
    fs::create_symlink("carta.txt", carpeta / "uno.rgt");
    fs::create_symlink(carpeta / "uno.rgt", carpeta / "dos.RGT.parcial");
    for (const auto* nombre : {"uno.rgt", "dos.RGT.parcial"}) {
        EXPECT_EQ(rechazado(orden({"--memoria", carpeta / nombre})), 1);
        EXPECT_THAT(queja, testing::ContainsRegex("que lleva a .*carta.txt, no parece una memoria"));
    }
    EXPECT_EQ(leerTodo(carpeta / "carta.txt"), "valioso");
}

TEST_F(TelvaneSim, ATextIsNoMemoryThoughItsNameEndsLikeOne) {
    const std::string carta = "Estimada señora:\nno borre esta carta.\n";
    std::ofstream(carpeta / "carta.rgt") << carta;
    fs::create_symlink("carta.rgt", carpeta / "m.rgt");
    for (const auto* nombre : {"carta.rgt", "m.rgt"}) {
        EXPECT_EQ(rechazado(orden({"--memoria", carpeta / nombre})), 1);
        EXPECT_THAT(queja, testing::ContainsRegex(
                               "carta.rgt,? no es la memoria de un registrador, sino un texto: dé otro "
                               "--memoria\n"));
        EXPECT_FALSE(hayEnlace(enlace));
    }
    EXPECT_EQ(leerTodo(carpeta / "carta.rgt"), carta);
    // What a download told of itself, on one line.
    std::ofstream(carpeta / "ficha.rgt") << R"({"descargada":"2026-01-02T03:04:05Z","errores_de_linea":0})";
    EXPECT_EQ(rechazado(orden({"--memoria", carpeta / "ficha.rgt"})), 1);
}

// Whole, erased, and as much of it as a broken download left.
TEST_F(TelvaneSim, WhatItKeptIsTakenAgain) {
    const Clima clima(3);
    const auto guarda = [&](const Bytes& imagen) {
        const auto ruta = carpeta / "guardada.rgt";
        fs::remove(ruta);
        MemoriaGuardada(ruta).guardar(imagen);
        EXPECT_EQ(MemoriaGuardada(ruta).leida(), imagen);
    };
    auto borrada = memoriaSimulada(clima);
    guarda(borrada);
    borrarMuestras(borrada);
    guarda(borrada);
    for (const auto* serie : {"20202020", "41424344", "00000000", "25504446"}) {
        ponerSerie(borrada, serie);
        for (const std::size_t largo : {0, 1, 4, 5, 63, 64, 383, 384, 4096}) {
            guarda(Bytes(borrada.begin(), borrada.begin() + static_cast<std::ptrdiff_t>(largo)));
            if (HasFailure()) FAIL() << serie << ", " << largo;
        }
        guarda(borrada);
    }
}

// Its length may be a memory's.
TEST_F(TelvaneSim, ADataBaseIsNoMemory) {
    auto base = std::string("SQLite format 3\0", 16);
    base.resize(kBytesMemoria, '\0');
    std::ofstream(carpeta / "h.sqlite", std::ios::binary) << base;
    fs::create_symlink("h.sqlite", carpeta / "h.rgt");
    for (const auto* nombre : {"h.sqlite", "h.rgt", "h.sqlite-wal"}) {
        EXPECT_EQ(rechazado(orden({"--memoria", carpeta / nombre})), 2);
        EXPECT_THAT(queja, HasSubstr("ahí está un archivo histórico u otra base de datos"));
    }
    EXPECT_EQ(leerTodo(carpeta / "h.sqlite"), base);
}

TEST_F(TelvaneSim, ARefusedLineLeavesNothing) {
    for (const auto& memoria : {enlace, carpeta / "." / enlace.filename()}) {
        EXPECT_EQ(rechazado(orden({"--memoria", memoria})), 2);
        EXPECT_THAT(queja, HasSubstr("--enlace y --memoria son el mismo archivo: " + memoria.string()));
    }
    EXPECT_EQ(rechazado({TELVANE_SIM, "--enlace", carpeta / "no" / "hay", "--memoria", carpeta / "m.rgt"}),
              1);
    EXPECT_EQ(rechazado(orden({"--memoria", carpeta / "no" / "m.rgt"})), 1);
    std::ofstream(enlace) << "valioso";
    EXPECT_EQ(rechazado(orden({"--memoria", carpeta / "m.rgt"})), 1);
    fs::remove(enlace);
    EXPECT_TRUE(fs::is_empty(carpeta));
}

// Its streams, as the shell says them, and the exit status of a run that must not serve.
TEST_F(TelvaneSim, StreamsThatTakeNothingChangeNoStatus) {
    for (const auto* flujos : {"2>/dev/full", ">/dev/full 2>&1", "2>&-", ">&- 2>&-"}) {
        const auto guion = std::string("\"$@\" ") + flujos;
        EXPECT_EQ(rechazado({"/bin/sh", "-c", guion, "sh", TELVANE_SIM}), 2) << flujos;
        EXPECT_EQ(rechazado({"/bin/sh", "-c", guion, "sh", TELVANE_SIM, "--enlace", carpeta / "no" / "hay"}),
                  1)
            << flujos;
    }
}

TEST_F(TelvaneSim, ItServesThoughNobodyCanBeToldWhere) {
    for (const auto* flujos : {">/dev/full", ">/dev/full 2>&1", "2>/dev/full"}) {
        Proceso proceso({"/bin/sh", "-c", std::string("exec \"$@\" ") + flujos, "sh", TELVANE_SIM, "--enlace",
                         enlace, "--baudios", "0"});
        ASSERT_TRUE(esperarA([&] { return hayEnlace(enlace); }));
        PuertoCrudo puerto(enlace);
        puerto.escribir(kSonda);
        EXPECT_THAT(puerto.leer(kBytesMarco), SizeIs(kBytesMarco)) << flujos;
        proceso.senal(SIGTERM);
        EXPECT_EQ(proceso.terminar(), 0) << flujos;
        if (std::string(flujos) == ">/dev/full") {
            EXPECT_THAT(proceso.errores(), HasSubstr("no se pudo escribir en la salida: no queda espacio"));
        }
    }
}

// Nobody reads the pipe, and it is full.
TEST_F(TelvaneSim, AReaderThatTakesNothingKeepsNoSignalFromEndingIt) {
    int tubo[2];
    ASSERT_EQ(::pipe2(tubo, O_NONBLOCK), 0);
    while (::write(tubo[1], "x", 1) == 1) continue;
    ASSERT_EQ(::fcntl(tubo[1], F_SETFL, 0), 0);
    Proceso proceso(
        {"/bin/sh", "-c", "exec \"$@\" >&" + std::to_string(tubo[1]), "sh", TELVANE_SIM, "--enlace", enlace});
    ASSERT_TRUE(esperarA([&] { return hayEnlace(enlace); }));
    proceso.senal(SIGTERM);
    EXPECT_EQ(proceso.terminar(), 0);
    EXPECT_FALSE(hayEnlace(enlace));
    ::close(tubo[0]);
    ::close(tubo[1]);
}

TEST_F(TelvaneSim, TwoDoNotWriteOneMemory) {
    const auto memoria = carpeta / "m.rgt";
    auto primero = arrancar({"--memoria", memoria});
    fs::create_symlink("m.rgt", carpeta / "otro nombre.rgt");
    fs::create_hard_link(memoria, carpeta / "duro.rgt");
    for (const auto* nombre : {"m.rgt", "otro nombre.rgt", "./m.rgt", "duro.rgt"}) {
        EXPECT_EQ(rechazado({TELVANE_SIM, "--enlace", carpeta / "otro", "--memoria", carpeta / nombre}), 1);
        EXPECT_THAT(queja, HasSubstr("otro telvane-sim usa la memoria"));
    }
    primero->senal(SIGKILL);
    primero->terminar();
    arrancar({"--memoria", memoria});
}

TEST_F(TelvaneSim, TheUnpacedDownloadIsTheMemory) {
    const auto memoria = carpeta / "base.rgt";
    const auto proceso = arrancar({"--baudios", "0", "--memoria", memoria.string(), "--semilla", "42"});
    PuertoCrudo puerto(enlace);
    EXPECT_EQ(puerto.pedir(kApertura), kApertura);
    EXPECT_EQ(puerto.pedir(kSaludo), kSaludo);
    Bytes imagen;
    for (std::size_t i = 0; i < kBloquesMemoria; ++i) {
        puerto.escribir(kApertura);
        const auto bloque = puerto.leer(kBytesBloque);
        ASSERT_THAT(bloque, SizeIs(kBytesBloque)) << i;
        imagen.insert(imagen.end(), bloque.begin(), bloque.end());
    }
    puerto.escribir(kApertura);
    EXPECT_EQ(imagen, contenido(memoria));
}

// Only the lower bound: how much later a loaded machine is says nothing about the program. The program makes
// up for at most 2.1 ms of its own delay, so the whole cannot be shorter than the line's by more than that.
TEST_F(TelvaneSim, At19200BaudItIsNoFasterThanTheLine) {
    constexpr int kBloques = 20;
    const auto proceso = arrancar({});
    PuertoCrudo puerto(enlace);
    EXPECT_EQ(puerto.pedir(kApertura), kApertura);
    EXPECT_EQ(puerto.pedir(kSaludo), kSaludo);
    const auto inicio = std::chrono::steady_clock::now();
    for (int i = 0; i < kBloques; ++i) {
        puerto.escribir(kApertura);
        ASSERT_THAT(puerto.leer(kBytesBloque), SizeIs(kBytesBloque)) << i;
    }
    EXPECT_GE(std::chrono::steady_clock::now() - inicio, kBloques * 65 * 520'833ns - 2200us);
}

TEST_F(TelvaneSim, AFaultHappensOnceAndThenAllIsWell) {
    const auto proceso = arrancar({"--baudios", "0", "--fallo", "sonda:byte=20:silencio"});
    PuertoCrudo puerto(enlace);
    puerto.escribir(kSonda);
    EXPECT_THAT(puerto.leer(20), SizeIs(20));
    puerto.escribir(kApertura);
    EXPECT_THAT(puerto.leer(1), testing::ElementsAre(kApertura));
    puerto.escribir(kSonda);
    puerto.escribir(kSonda);
    EXPECT_THAT(puerto.leer(kBytesMarco), SizeIs(kBytesMarco));
}

TEST_F(TelvaneSim, AHungUpPortDisappearsAndComesBack) {
    const auto proceso = arrancar({"--baudios", "0", "--fallo", "sonda:byte=5:colgar"});
    {
        PuertoCrudo puerto(enlace);
        puerto.escribir(kSonda);
        puerto.leer(kBytesMarco);
        EXPECT_TRUE(puerto.colgado());
    }
    EXPECT_FALSE(hayEnlace(enlace));
    ASSERT_TRUE(esperarA([&] { return hayEnlace(enlace); }));
    PuertoCrudo puerto(enlace);
    puerto.escribir(kSonda);
    EXPECT_THAT(puerto.leer(kBytesMarco), SizeIs(kBytesMarco));
}

}  // namespace
}  // namespace telvane
