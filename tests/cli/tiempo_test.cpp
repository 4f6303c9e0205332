// The console tool waits on a clock that nobody sets: what the one on the wall does changes nothing.
#include "tests/cli/cli_prueba.h"

namespace telvane {
namespace {

using namespace std::chrono_literals;
using std::chrono::nanoseconds;

class TiempoCli : public CliPrueba, public testing::WithParamInterface<std::vector<std::string>> {
   protected:
    std::vector<std::string> orden() {
        auto todo = GetParam();
        if (todo.front() == "descargar")
            todo.insert(todo.end(), {"--reemplazar", "--base", (carpeta / "a.rgt").string()});
        return todo;
    }
};

TEST_P(TiempoCli, JumpsAndMidnightInsideEveryWaitChangeNeitherTheResultNorHowLongItTakes) {
    const auto limpia = correr(orden());
    ASSERT_EQ(limpia.codigo, CodigoSalida::hecho) << limpia.errores;
    for (const auto salto : {nanoseconds(1h), nanoseconds(-1h), nanoseconds(13h + 59min + 58s)}) {
        for (nanoseconds cuando = 0ns; cuando < limpia.duracion; cuando += 250ms) {
            SCOPED_TRACE(std::chrono::duration<double>(cuando).count());
            // What is read back is compared with what was sent.
            puertos.maquina(kPuerto).ponerReloj(bucle.reloj().ahora(), bucle.reloj().monotono());
            const auto alarma = bucle.alarma(cuando, [&] { bucle.reloj().saltar(salto); });
            const auto r = correr(orden());
            EXPECT_EQ(r.codigo, CodigoSalida::hecho) << r.errores;
            EXPECT_NEAR(std::chrono::duration<double>(r.duracion).count(),
                        std::chrono::duration<double>(limpia.duracion).count(), 0.01);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(CadaOrden, TiempoCli,
                         testing::Values(std::vector<std::string>{"buscar"},
                                         std::vector<std::string>{"configuracion"},
                                         std::vector<std::string>{"en-linea", "--cuenta", "3"},
                                         std::vector<std::string>{"serie", "02080050"},
                                         std::vector<std::string>{"configurar", "--intervalo", "30",
                                                                  "--fecha", "01/02/2026", "--borrar-memoria",
                                                                  "--sin-respaldo"},
                                         std::vector<std::string>{"descargar"}),
                         [](const auto& caso) {
                             std::string nombre = caso.param.front();
                             std::erase(nombre, '-');
                             return nombre;
                         });

// The machine slept, or the program was stopped, for minutes: the logger has given the exchange up meanwhile.
TEST_F(CliPrueba, AMachineThatSleptTellsItAndTheNextRunSucceeds) {
    for (auto cuando = 0ms; cuando < 2100ms; cuando += 100ms) {
        SCOPED_TRACE(cuando.count());
        const auto siesta = bucle.alarma(cuando, [&] { bucle.reloj().dejarPasar(5min); });
        const auto r = correr({"configuracion"});
        EXPECT_THAT(r.codigo,
                    testing::AnyOf(CodigoSalida::hecho, CodigoSalida::fallo, CodigoSalida::sinRegistrador));
        EXPECT_LT(r.duracion, 5min + 10s);
        EXPECT_EQ(correr({"configuracion"}).codigo, CodigoSalida::hecho);
    }
}

TEST_F(CliPrueba, ADownloadThatSleptStartsAgainByItself) {
    puertos.manipular(kPuerto, [this, dormida = false](const ByteSaliente& saliente) mutable {
        const bool aqui = saliente.intercambio == Intercambio::descarga && saliente.indice == 2 + 64 * 1000;
        if (aqui && !std::exchange(dormida, true)) bucle.reloj().dejarPasar(5min);
        return Efecto::pasar(saliente.byte);
    });
    const auto base = carpeta / "a.rgt";
    const auto r = correr({"descargar", "--reemplazar", "--base", base});
    EXPECT_EQ(r.codigo, CodigoSalida::hecho) << r.errores;
    EXPECT_EQ(leerTodo(base), comoTexto(puertos.maquina(kPuerto).imagen()));
}

}  // namespace
}  // namespace telvane
