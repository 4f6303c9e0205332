// A signal at any moment of any command: it ends at once, says so, and keeps what came.
#include <csignal>

#include "data/memoria.h"
#include "tests/cli/cli_prueba.h"

namespace telvane {
namespace {

using namespace std::chrono_literals;
using std::chrono::nanoseconds;

// At the pace of the line, so that an exchange lasts.
class FinalesCli : public CliPrueba, public testing::WithParamInterface<std::vector<std::string>> {
   protected:
    FinalesCli() : CliPrueba(19200) {}
    std::vector<std::string> orden() {
        auto todo = GetParam();
        if (todo.front() == "descargar") todo.insert(todo.end(), {"--base", base().string()});
        return todo;
    }
    std::filesystem::path base() const { return carpeta / "a.rgt"; }
    std::filesystem::path parcial() const { return carpeta / "a.rgt.parcial"; }

    // Of a command that writes: what was sent, if anything, and of one that erases, where the backup is.
    void diceComoQueda(const std::string& errores) {
        const auto orden = GetParam().front();
        if (orden != "serie" && orden != "configurar") return;
        EXPECT_THAT(errores, testing::ContainsRegex("\nNo se envió nada: |\nSe envi(ó|aron) "));
        if (orden == "configurar") {
            EXPECT_THAT(errores,
                        testing::EndsWith("\nNo hay respaldo de la memoria: se pidió --sin-respaldo.\n"));
        }
    }

    // Whole blocks, as they came, and their number told.
    void quedaLoRecibido(const std::string& errores) {
        EXPECT_FALSE(std::filesystem::exists(base()));
        if (!std::filesystem::exists(parcial())) return;
        const auto guardado = leerTodo(parcial());
        EXPECT_EQ(guardado.size() % kBytesBloque, 0U);
        EXPECT_EQ(guardado.substr(64),
                  comoTexto(puertos.maquina(kPuerto).imagen()).substr(64, guardado.size() - 64));
        EXPECT_THAT(errores,
                    testing::HasSubstr(" " + std::to_string(guardado.size() / kBytesBloque) + " de 4096"));
        std::filesystem::remove(parcial());
    }
};

TEST_P(FinalesCli, ASignalEndsItFromEveryWait) {
    const auto registrador = puertos.maquina(kPuerto);
    const auto limpia = correr(orden());
    ASSERT_EQ(limpia.codigo, CodigoSalida::hecho) << limpia.errores;
    std::filesystem::remove(base());
    constexpr int kMomentos = 50;
    for (int vez = 0; vez < kMomentos; ++vez) {
        const nanoseconds cuando = 1us + limpia.duracion / kMomentos * vez;
        SCOPED_TRACE(std::chrono::duration<double>(cuando).count());
        constexpr int kSenales[] = {SIGINT, SIGTERM, SIGHUP};
        senalTras = {cuando, kSenales[vez % 3]};
        puertos.conectar(kPuerto, registrador);
        const auto r = correr(orden());
        EXPECT_EQ(r.codigo, CodigoSalida::interrumpido) << r.errores;
        EXPECT_EQ(r.duracion, cuando);
        EXPECT_THAT(r.errores, testing::HasSubstr("interrumpido"));
        diceComoQueda(r.errores);
        quedaLoRecibido(r.errores);
    }
    // The logger gives the broken exchange up, and the same command succeeds.
    senalTras = {};
    EXPECT_EQ(correr(orden()).codigo, CodigoSalida::hecho);
}

INSTANTIATE_TEST_SUITE_P(CadaOrden, FinalesCli,
                         testing::Values(std::vector<std::string>{"buscar"},
                                         std::vector<std::string>{"configuracion"},
                                         std::vector<std::string>{"en-linea", "--cuenta", "3"},
                                         std::vector<std::string>{"serie", "12345678"},
                                         std::vector<std::string>{"configurar", "--intervalo", "30",
                                                                  "--borrar-memoria", "--sin-respaldo"},
                                         std::vector<std::string>{"descargar", "--verificar"}),
                         [](const auto& caso) {
                             std::string nombre = caso.param.front();
                             std::erase(nombre, '-');
                             return nombre;
                         });

}  // namespace
}  // namespace telvane
