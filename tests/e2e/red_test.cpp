// The console tool at a logger behind a network: a serial device server of the tests, over both families of
// addresses and with a way to go in between, and the distribution's own server.
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/apoyo/carpeta_temporal.h"
#include "tests/apoyo/leer_todo.h"
#include "tests/apoyo/proceso.h"
#include "tests/apoyo/servidor_serie.h"
#include "tests/e2e/registrador_simulado.h"

namespace telvane {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;

constexpr int kBloques = 4096;

class Red : public testing::Test {
   protected:
    static std::vector<std::string> orden(const std::string& direccion, std::vector<std::string> argumentos) {
        argumentos.insert(argumentos.begin(), {TELVANE_CLI, "--com", "1=" + direccion});
        return argumentos;
    }
    std::string base() const { return carpeta / "a.rgt"; }
    // The whole memory over this address, byte for byte; how long it took.
    std::chrono::duration<double> descargar(const std::string& direccion,
                                            const RegistradorSimulado& registrador,
                                            Proceso::Plazo plazo = Proceso::kPlazo * 3) const {
        const auto comienzo = std::chrono::steady_clock::now();
        Proceso proceso(orden(direccion, {"descargar", "--base", base()}));
        EXPECT_EQ(proceso.terminar(plazo), 0) << proceso.errores();
        EXPECT_TRUE(leerTodo(base()) == registrador.memoria());
        return std::chrono::steady_clock::now() - comienzo;
    }

    CarpetaTemporal carpeta;
};

TEST_F(Red, AWholeDownloadOverIpv4) {
    const RegistradorSimulado registrador;
    const ServidorSerie servidor(registrador.enlace());
    descargar(servidor.direccion(), registrador);
}

TEST_F(Red, AWholeDownloadOverIpv6) {
    const RegistradorSimulado registrador;
    std::optional<ServidorSerie> servidor;
    try {
        servidor.emplace(registrador.enlace(), ServidorSerie::Red{.familia = ServidorSerie::Familia::ipv6});
    } catch (const std::system_error& error) {
        GTEST_SKIP() << "esta máquina no tiene ::1: " << error.what();
    }
    descargar(servidor->direccion(), registrador);
}

// Every acknowledgement pays the way there and back, and nothing is given up for it.
class Lejos : public Red, public testing::WithParamInterface<std::chrono::milliseconds> {};

TEST_P(Lejos, EveryBlockPaysARoundTripAndNoMore) {
    constexpr int kSolo = 60;
    const RegistradorSimulado registrador(
        {"--baudios", "0", "--fallo", "descarga:bloque=" + std::to_string(kSolo) + ":colgar"});
    const ServidorSerie servidor(registrador.enlace(), {.demora = GetParam() / 2});
    const auto comienzo = std::chrono::steady_clock::now();
    Proceso proceso(orden(servidor.direccion(), {"descargar", "--base", base(), "--reintentos", "0"}));
    EXPECT_EQ(proceso.terminar(Proceso::kPlazo * 3), 1);
    const auto tardo = std::chrono::steady_clock::now() - comienzo;
    EXPECT_THAT(proceso.errores(), HasSubstr("quedan " + std::to_string(kSolo) + " de 4096 bloques"));
    EXPECT_EQ(std::filesystem::file_size(base() + ".parcial"), kSolo * 64U);
    EXPECT_GE(tardo, kSolo * GetParam());
}

INSTANTIATE_TEST_SUITE_P(Ms, Lejos, testing::Values(10ms, 50ms),
                         [](const auto& caso) { return std::to_string(caso.param.count()); });

// The whole memory: 4.1 s for each millisecond.
class MuyLejos : public Lejos {};

TEST_P(MuyLejos, AWholeDownloadTakesARoundTripABlockMore) {
    const RegistradorSimulado registrador;
    const ServidorSerie servidor(registrador.enlace(), {.demora = GetParam() / 2});
    const auto tardo = descargar(servidor.direccion(), registrador, 20min);
    const std::chrono::duration<double> vueltas = kBloques * GetParam();
    EXPECT_GE(tardo, vueltas);
    std::printf("%lld ms: %.1f s, of which %.1f s on the way\n", static_cast<long long>(GetParam().count()),
                tardo.count(), vueltas.count());
}

INSTANTIATE_TEST_SUITE_P(Resto, MuyLejos, testing::Values(10ms),
                         [](const auto& caso) { return std::to_string(caso.param.count()); });

// ---- The distribution's server.

// Listens on this port of this machine, as the system's table of sockets says.
bool escucha(int puerto) {
    std::ifstream tabla("/proc/net/tcp");
    char buscado[16];
    std::snprintf(buscado, sizeof buscado, ":%04X", static_cast<unsigned>(puerto));
    constexpr std::string_view kEscucha = "0A";
    for (std::string linea, campo; std::getline(tabla, linea);) {
        std::istringstream campos(linea);
        std::string local, remota, estado;
        campos >> campo >> local >> remota >> estado;
        if (estado == kEscucha && local.ends_with(buscado)) return true;
    }
    return false;
}

class Ser2net : public Red {
   protected:
    void SetUp() override {
        if (std::string_view(PROGRAMA_SER2NET).empty()) GTEST_SKIP() << "sin ser2net (paquete ser2net)";
    }
    // Somebody may take a port between two looks at it: then another one is tried.
    void servir(const std::filesystem::path& dispositivo) {
        for (int intento = 0; intento < 5; ++intento) {
            int puerto = 0;
            {
                const ServidorSerie libre("/nada");
                puerto = std::stoi(libre.direccion().substr(libre.direccion().rfind(':') + 1));
            }
            std::ofstream(carpeta / "ser2net.yaml")
                << "connection: &estacion\n"
                << "  accepter: tcp(nodelay),127.0.0.1," << puerto << "\n"
                << "  connector: serialdev," << dispositivo.string() << ",19200n81,local\n"
                << "  options:\n    chardelay: false\n";
            servidor = std::make_unique<Proceso>(
                std::vector<std::string>{PROGRAMA_SER2NET, "-n", "-u", "-c", carpeta / "ser2net.yaml"});
            const auto listo = [&] { return escucha(puerto) || servidor->terminar(0ms).has_value(); };
            if (esperarA(listo) && escucha(puerto)) {
                direccion = "tcp://127.0.0.1:" + std::to_string(puerto);
                return;
            }
        }
        FAIL() << "ser2net no arranca: " << servidor->errores();
    }
    std::unique_ptr<Proceso> servidor;
    std::string direccion;
};

TEST_F(Ser2net, PassesAWholeDownload) {
    const RegistradorSimulado registrador;
    ASSERT_NO_FATAL_FAILURE(servir(registrador.enlace()));
    Proceso buscar(orden(direccion, {"buscar"}));
    EXPECT_EQ(buscar.terminar(), 0) << buscar.errores();
    descargar(direccion, registrador);
}

// Set as for the others, on the port that the logger left.
TEST_F(Ser2net, ThatLosesItsDeviceIsToldAsOneThatHasGone) {
    auto registrador = std::make_unique<RegistradorSimulado>(
        std::vector<std::string>{"--baudios", "0", "--fallo", "descarga:bloque=20:colgar"});
    ASSERT_NO_FATAL_FAILURE(servir(registrador->enlace()));
    Proceso proceso(orden(direccion, {"descargar", "--base", base(), "--reintentos", "0"}));
    EXPECT_EQ(proceso.terminar(), 1);
    EXPECT_THAT(proceso.errores(), HasSubstr("se cortó la conexión con 127.0.0.1"));
    EXPECT_THAT(proceso.errores(), HasSubstr("quedan 20 de 4096 bloques"));
}

}  // namespace
}  // namespace telvane
