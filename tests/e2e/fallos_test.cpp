// A sample of the fault grid on a real pty: the built programs, the fault as telvane-sim takes it, and the
// same command again, which succeeds. And what only the system can do to a port: reads and writes that fail.
#include <algorithm>
#include <array>
#include <csignal>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/apoyo/carpeta_temporal.h"
#include "tests/apoyo/proceso.h"
#include "tests/apoyo/servidor_serie.h"
#include "tests/e2e/datos_guardados.h"
#include "tests/e2e/llamadas.h"

namespace telvane {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

// A logger with a fault of its line, and the console tool at it.
class Puesto {
   public:
    explicit Puesto(const std::string& fallo = "", bool porRed = false) {
        std::vector<std::string> orden = {TELVANE_SIM, "--enlace", enlace_.string(), "--baudios", "0"};
        if (!fallo.empty()) orden.insert(orden.end(), {"--fallo", fallo});
        simulador_ = std::make_unique<Proceso>(orden);
        EXPECT_TRUE(simulador_->linea()) << simulador_->errores();
        if (porRed) servidor_ = std::make_unique<ServidorSerie>(enlace_);
    }
    std::vector<std::string> orden(std::vector<std::string> argumentos) const {
        if (argumentos.front() == "descargar")
            argumentos.insert(argumentos.end(), {"--base", base().string()});
        const auto puerto = servidor_ ? servidor_->direccion() : enlace_.string();
        argumentos.insert(argumentos.begin(), {TELVANE_CLI, "--com", "1=" + puerto});
        return argumentos;
    }
    FinDePrograma correr(const std::vector<std::string>& argumentos) const {
        Proceso proceso(orden(argumentos));
        const auto estado = proceso.terminar();
        return {estado, proceso.errores()};
    }
    // A device that went away is there again.
    bool hayPuerto() const { return fs::exists(enlace_); }
    std::string dispositivo() const { return fs::read_symlink(enlace_).string(); }
    fs::path base() const { return carpeta_ / "a.rgt"; }

   private:
    CarpetaTemporal carpeta_;
    const fs::path enlace_ = carpeta_ / "COM1";
    std::unique_ptr<Proceso> simulador_;
    std::unique_ptr<ServidorSerie> servidor_;  // between the logger and the tool
};

struct Caso {
    const char* fallo;
    std::vector<std::string> argumentos;
    int estado;
    const char* dice;
};

constexpr const char* kDesaparecido = "ha desaparecido";
constexpr const char* kDeMas = "el registrador envió bytes de más. Revise el cable y el adaptador";
constexpr const char* kCallado =
    "el registrador dejó de responder a mitad de la comunicación: revise el cable";
const std::vector<std::string> kDescargar = {"descargar", "--reintentos", "0", "--espera", "1"};

// What follows a fault waits as long as any command: it is the line's turn to be well, and not the machine's
// to be fast.
std::vector<std::string> despues(std::vector<std::string> argumentos) {
    const auto espera = std::ranges::find(argumentos, "--espera");
    if (espera != argumentos.end()) argumentos.erase(espera, espera + 2);
    return argumentos;
}
const std::vector<Caso> kCasos = {
    {"sonda:byte=5:silencio", {"buscar"}, 0, ""},
    {"lectura:byte=0:perder", {"configuracion"}, 0, "el registrador no responde"},
    {"lectura:byte=0:demora=3500", {"configuracion"}, 0, "el registrador no responde"},
    {"lectura:byte=0:demora=600", {"configuracion"}, 0, ""},
    {"lectura:byte=60:insertar=1", {"configuracion"}, 0, kDeMas},
    {"lectura:byte=70:doblar", {"configuracion"}, 0, kDeMas},
    {"lectura:byte=20:invertir", {"configuracion"}, 0, ""},
    {"descarga:byte=1:cambiar=AB", kDescargar, 1, "respuesta inesperada del registrador"},
    {"descarga:bloque=3:byte=10:insertar=40", kDescargar, 1, "quedan 3 de 4096 bloques"},
    {"descarga:bloque=2:silencio", kDescargar, 1, kCallado},
    {"descarga:bloque=5:byte=63:colgar", kDescargar, 1, kDesaparecido},
};

// All at once: they wait, most of the time.
void probar(const std::vector<Caso>& casos, bool porRed) {
    std::vector<std::unique_ptr<Puesto>> puestos;
    for (const auto& caso : casos) puestos.push_back(std::make_unique<Puesto>(caso.fallo, porRed));
    using Orden = std::function<std::vector<std::string>(const Caso&)>;
    using Mirar = std::function<void(const Caso&, const Puesto&, Proceso&)>;
    const auto todos = [&](const Orden& orden, const Mirar& mirar) {
        std::vector<std::unique_ptr<Proceso>> procesos;
        for (std::size_t i = 0; i < casos.size(); ++i) {
            ASSERT_TRUE(esperarA([&] { return puestos[i]->hayPuerto(); }));
            procesos.push_back(std::make_unique<Proceso>(puestos[i]->orden(orden(casos[i]))));
        }
        for (std::size_t i = 0; i < casos.size(); ++i) {
            SCOPED_TRACE(casos[i].fallo);
            mirar(casos[i], *puestos[i], *procesos[i]);
        }
    };
    const auto conFallo = [](const Caso& caso) { return caso.argumentos; };
    const auto sinFallo = [](const Caso& caso) { return despues(caso.argumentos); };
    todos(conFallo, [](const Caso& caso, const Puesto&, Proceso& proceso) {
        EXPECT_EQ(proceso.terminar(Proceso::kPlazo * 3), caso.estado) << proceso.errores();
        const std::string dice = caso.dice;
        if (dice.empty()) {
            EXPECT_EQ(proceso.errores(), "");
            return;
        }
        EXPECT_THAT(proceso.errores(), HasSubstr(dice));
        // A reading that broke off is told and taken again.
        if (caso.estado == 0) {
            EXPECT_THAT(proceso.errores(), HasSubstr("Se vuelve a empezar"));
        }
    });
    todos(sinFallo, [](const Caso& caso, const Puesto& puesto, Proceso& proceso) {
        EXPECT_EQ(proceso.terminar(Proceso::kPlazo * 3), 0) << proceso.errores();
        EXPECT_EQ(fs::exists(puesto.base()), caso.argumentos.front() == "descargar");
    });
}

TEST(FallosEnUnPty, EachEndsAsInTheGridAndTheSameCommandSucceedsAfterwards) {
    probar(kCasos, false);
}

// What a device does, a server passes on; that it is gone, it tells by hanging up. There is more to look at.
std::vector<Caso> casosPorRed() {
    const std::map<std::string_view, const char*> porRed = {
        {kDesaparecido, "se cortó la conexión con 127.0.0.1"},
        {kDeMas, "el registrador envió bytes de más. Revise el servidor de puertos y el cable"},
        {kCallado, "el registrador dejó de responder a mitad de la comunicación: revise la red"},
    };
    auto casos = kCasos;
    for (auto& caso : casos) {
        if (const auto otro = porRed.find(caso.dice); otro != porRed.end()) caso.dice = otro->second;
    }
    return casos;
}

// A byte lost, one too many, and the device gone.
TEST(FallosPorLaRed, TheWorstOfThemEndAsOnAWire) {
    const auto todos = casosPorRed();
    probar({todos[1], todos[4], todos.back()}, true);
}

TEST(RestoDeFallosPorLaRed, EachEndsAsOnAWire) {
    probar(casosPorRed(), true);
}

// Every fault that a server passes on, at places of each exchange: the command ends by itself and says why
// where it failed, and the same command succeeds afterwards.
constexpr std::array<const char*, 9> kFallosQuePasan = {"silencio", "demora=600", "demora=3500",
                                                        "invertir", "insertar=1", "insertar=40",
                                                        "perder",   "doblar",     "colgar"};

class TodoFalloPorLaRed : public testing::TestWithParam<const char*> {};

TEST_P(TodoFalloPorLaRed, EndsByItselfAndTheSameCommandSucceedsAfterwards) {
    const std::string lugar = GetParam();
    const auto argumentos =
        lugar.starts_with("descarga") ? kDescargar : std::vector<std::string>{"configuracion"};
    std::vector<std::unique_ptr<Puesto>> puestos;
    std::vector<std::unique_ptr<Proceso>> procesos;
    for (const auto* fallo : kFallosQuePasan) {
        puestos.push_back(std::make_unique<Puesto>(lugar + ":" + fallo, true));
        procesos.push_back(std::make_unique<Proceso>(puestos.back()->orden(argumentos)));
    }
    for (std::size_t i = 0; i < puestos.size(); ++i) {
        SCOPED_TRACE(lugar + ":" + kFallosQuePasan[i]);
        const auto estado = procesos[i]->terminar(Proceso::kPlazo * 3);
        EXPECT_THAT(estado, testing::AnyOf(0, 1, 3)) << procesos[i]->errores();
        if (estado != 0) {
            EXPECT_THAT(procesos[i]->errores(), HasSubstr("telvane-cli: "));
        }
        ASSERT_TRUE(esperarA([&] { return puestos[i]->hayPuerto(); }));
        fs::remove(puestos[i]->base());
        procesos[i] = std::make_unique<Proceso>(puestos[i]->orden(despues(argumentos)));
    }
    for (std::size_t i = 0; i < puestos.size(); ++i) {
        SCOPED_TRACE(lugar + ":" + kFallosQuePasan[i]);
        EXPECT_EQ(procesos[i]->terminar(Proceso::kPlazo * 3), 0) << procesos[i]->errores();
        if (lugar.starts_with("descarga")) {
            EXPECT_EQ(fs::file_size(puestos[i]->base()), kBytesArchivoBase);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Resto, TodoFalloPorLaRed,
                         testing::Values("sonda:byte=0", "sonda:byte=20", "lectura:byte=0", "lectura:byte=1",
                                         "lectura:byte=2", "lectura:byte=60", "lectura:byte=112",
                                         "descarga:byte=0", "descarga:byte=1", "descarga:bloque=0:byte=0",
                                         "descarga:bloque=2047:byte=32", "descarga:bloque=4095:byte=63"),
                         [](const auto& caso) {
                             std::string nombre = caso.param;
                             std::replace_if(
                                 nombre.begin(), nombre.end(), [](char c) { return c == ':' || c == '='; },
                                 '_');
                             return nombre;
                         });

// The machine sleeps in the middle of a download, longer than the logger waits.
TEST(FallosEnUnPty, ADownloadThatWasStoppedForAWhileStartsAgainByItself) {
    const Puesto puesto("descarga:bloque=1000:demora=1500");
    Proceso proceso(puesto.orden({"descargar", "--espera", "1"}));
    const auto parcial = puesto.base().string() + ".parcial";
    ASSERT_TRUE(esperarA([&] {
        std::error_code error;
        return fs::file_size(parcial, error) == 1000 * 64 && !error;
    }));
    proceso.senal(SIGSTOP);
    // What passes here is the sleep itself.
    std::this_thread::sleep_for(std::chrono::seconds(3));
    proceso.senal(SIGCONT);
    EXPECT_EQ(proceso.terminar(Proceso::kPlazo * 3), 0) << proceso.errores();
    EXPECT_THAT(proceso.errores(), HasSubstr("Se vuelve a empezar"));
    EXPECT_EQ(fs::file_size(puesto.base()), kBytesArchivoBase);
}

// Calls on the port's own descriptor that fail.
class FallaElSistema : public ::testing::Test {
   protected:
    void SetUp() override {
        if (const auto por = porQueNoSeTraza(); !por.empty()) GTEST_SKIP() << por;
        puesto_ = std::make_unique<Puesto>();
    }
    FinDePrograma conLinea(const std::string& llamada, const std::string& efecto,
                           const std::string& orden) const {
        std::vector<std::string> todo = {PROGRAMA_STRACE,
                                         "-o",
                                         "/dev/null",
                                         "-P",
                                         puesto_->dispositivo(),
                                         "-e",
                                         "inject=" + llamada + ":" + efecto,
                                         "--"};
        const auto propia = puesto_->orden({orden});
        todo.insert(todo.end(), propia.begin(), propia.end());
        Proceso proceso(todo, {"ASAN_OPTIONS=detect_leaks=0"});
        const auto estado = proceso.terminar();
        return {estado, proceso.errores()};
    }
    void TearDown() override {
        if (puesto_) {
            EXPECT_EQ(puesto_->correr({"buscar"}).estado, 0);
        }
    }

    std::unique_ptr<Puesto> puesto_;
};

TEST_F(FallaElSistema, AWriteThatFailsIsADeviceThatHasGone) {
    const auto fin = conLinea("write", "error=EIO:when=4+", "configuracion");
    EXPECT_EQ(fin.estado, 1);
    EXPECT_THAT(fin.errores, HasSubstr("ha desaparecido"));
}

TEST_F(FallaElSistema, AReadThatFailsIsADeviceThatHasGone) {
    const auto fin = conLinea("read", "error=EIO:when=8+", "configuracion");
    EXPECT_NE(fin.estado, 0);
    EXPECT_THAT(fin.errores, HasSubstr("ha desaparecido"));
}

// A driver that says it has room and takes nothing does not hold the program for ever.
TEST_F(FallaElSistema, ADriverThatTakesNothingIsGivenUp) {
    const auto fin = conLinea("write", "error=EAGAIN:when=1+", "buscar");
    EXPECT_EQ(fin.estado, 3);
    EXPECT_THAT(fin.errores, HasSubstr("no acepta más datos"));
}

TEST_F(FallaElSistema, AnInterruptedCallIsMadeAgain) {
    for (const auto* llamada : {"read", "write"}) {
        const auto fin = conLinea(llamada, "error=EINTR:when=5+3", "configuracion");
        EXPECT_EQ(fin.estado, 0) << llamada << ": " << fin.errores;
    }
}

}  // namespace
}  // namespace telvane
