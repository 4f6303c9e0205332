// A sample of the fault grid on a real pty: the built programs, the fault as telvane-sim takes it, and the
// same command again, which succeeds. And what only the system can do to a port: reads and writes that fail.
#include <csignal>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/apoyo/carpeta_temporal.h"
#include "tests/apoyo/proceso.h"
#include "tests/e2e/datos_guardados.h"
#include "tests/e2e/llamadas.h"

namespace telvane {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

// A logger with a fault of its line, and the console tool at it.
class Puesto {
   public:
    explicit Puesto(const std::string& fallo = "") {
        std::vector<std::string> orden = {TELVANE_SIM, "--enlace", enlace_.string(), "--baudios", "0"};
        if (!fallo.empty()) orden.insert(orden.end(), {"--fallo", fallo});
        simulador_ = std::make_unique<Proceso>(orden);
        EXPECT_TRUE(simulador_->linea()) << simulador_->errores();
    }
    std::vector<std::string> orden(std::vector<std::string> argumentos) const {
        if (argumentos.front() == "descargar")
            argumentos.insert(argumentos.end(), {"--base", base().string()});
        argumentos.insert(argumentos.begin(), {TELVANE_CLI, "--com", "1=" + enlace_.string()});
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
};

struct Caso {
    const char* fallo;
    std::vector<std::string> argumentos;
    int estado;
    const char* dice;
};

const std::vector<std::string> kDescargar = {"descargar", "--reintentos", "0", "--espera", "1"};
const std::vector<Caso> kCasos = {
    {"sonda:byte=5:silencio", {"buscar"}, 0, ""},
    {"lectura:byte=0:perder", {"configuracion"}, 0, "el registrador no responde"},
    {"lectura:byte=0:demora=3500", {"configuracion"}, 0, "el registrador no responde"},
    {"lectura:byte=0:demora=600", {"configuracion"}, 0, ""},
    {"lectura:byte=60:insertar=1",
     {"configuracion"},
     0,
     "el registrador envió bytes de más. Revise el cable"},
    {"lectura:byte=70:doblar", {"configuracion"}, 0, "el registrador envió bytes de más. Revise el cable"},
    {"lectura:byte=20:invertir", {"configuracion"}, 0, ""},
    {"descarga:byte=1:cambiar=AB", kDescargar, 1, "respuesta inesperada del registrador"},
    {"descarga:bloque=3:byte=10:insertar=40", kDescargar, 1, "quedan 3 de 4096 bloques"},
    {"descarga:bloque=2:silencio", kDescargar, 1,
     "el registrador dejó de responder a mitad de la comunicación: revise el cable"},
    {"descarga:bloque=5:byte=63:colgar", kDescargar, 1, "ha desaparecido"},
};

// All at once: they wait, most of the time.
TEST(FallosEnUnPty, EachEndsAsInTheGridAndTheSameCommandSucceedsAfterwards) {
    std::vector<std::unique_ptr<Puesto>> puestos;
    for (const auto& caso : kCasos) puestos.push_back(std::make_unique<Puesto>(caso.fallo));
    const auto todos = [&](const std::function<void(const Caso&, const Puesto&, Proceso&)>& mirar) {
        std::vector<std::unique_ptr<Proceso>> procesos;
        for (std::size_t i = 0; i < kCasos.size(); ++i) {
            ASSERT_TRUE(esperarA([&] { return puestos[i]->hayPuerto(); }));
            procesos.push_back(std::make_unique<Proceso>(puestos[i]->orden(kCasos[i].argumentos)));
        }
        for (std::size_t i = 0; i < kCasos.size(); ++i) {
            SCOPED_TRACE(kCasos[i].fallo);
            mirar(kCasos[i], *puestos[i], *procesos[i]);
        }
    };
    todos([](const Caso& caso, const Puesto&, Proceso& proceso) {
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
    todos([](const Caso& caso, const Puesto& puesto, Proceso& proceso) {
        EXPECT_EQ(proceso.terminar(Proceso::kPlazo * 3), 0) << proceso.errores();
        EXPECT_EQ(fs::exists(puesto.base()), caso.argumentos.front() == "descargar");
    });
}

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
