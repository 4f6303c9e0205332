// Every exchange with a fault at every byte of the logger's answers, each followed by a clean run.
#include "cli_prueba.h"

namespace telvane {
namespace {

using namespace std::chrono_literals;

enum class Dano { silencio, cambiado, sobrante, colgado, errorEscritura };

struct CasoFallo {
    const char* nombre;
    std::vector<std::string> orden;
    // Which of the bytes that the logger says in a clean run are hit: every so many of them.
    std::size_t desde;
    std::size_t hasta;
    std::size_t paso;
};

void PrintTo(const CasoFallo& caso, std::ostream* flujo) {
    *flujo << caso.nombre;
}

class Fallos : public CliPrueba, public testing::WithParamInterface<std::tuple<CasoFallo, Dano>> {
   protected:
    static Efecto danar(const ByteSaliente& saliente, Dano dano) {
        auto efecto = Efecto::pasar(saliente.byte);
        switch (dano) {
            case Dano::silencio:
                efecto.callar = true;
                break;
            case Dano::cambiado:
                efecto.bytes[0] ^= 0xFF;
                break;
            case Dano::sobrante:
                efecto.bytes.push_back(0x3C);
                break;
            case Dano::colgado:
                efecto.colgar = true;
                break;
            case Dano::errorEscritura:
                efecto.errorEscritura = true;
                break;
        }
        return efecto;
    }
};

TEST_P(Fallos, EndWithACodeInTimeAndTheNextRunSucceeds) {
    const auto& [caso, dano] = GetParam();
    for (std::size_t lugar = caso.desde; lugar < caso.hasta; lugar += caso.paso) {
        SCOPED_TRACE(lugar);
        puertos.manipular(kPuerto, [&, dano = dano](const ByteSaliente& saliente) {
            return saliente.numero == lugar ? danar(saliente, dano) : Efecto::pasar(saliente.byte);
        });
        auto orden = caso.orden;
        if (orden[0] == "descargar")
            orden.insert(orden.end(), {"--reintentos", "0", "--base", carpeta / "a.rgt"});
        const auto r = correr(orden);
        EXPECT_THAT(r.codigo,
                    testing::AnyOf(CodigoSalida::hecho, CodigoSalida::fallo, CodigoSalida::sinRegistrador));
        EXPECT_LT(r.duracion, 60s);
        EXPECT_FALSE(puertos.abierto(kPuerto));

        puertos.manipular(kPuerto, {});
        puertos.reponer(kPuerto);
        const auto limpia = correr(orden);
        ASSERT_EQ(limpia.codigo, CodigoSalida::hecho) << limpia.errores;
    }
}

std::string nombre(const testing::TestParamInfo<std::tuple<CasoFallo, Dano>>& info) {
    constexpr std::array<const char*, 5> kDanos = {"silencio", "cambiado", "sobrante", "colgado",
                                                   "errorEscritura"};
    return std::string(std::get<0>(info.param).nombre) + "_" +
           kDanos[static_cast<std::size_t>(std::get<1>(info.param))];
}

// The answers: 31 bytes to the probe, 31 to the wake-up, then those of the exchange. Every command but the
// first two starts with a read of the configuration.
constexpr std::size_t kLectura = 31 + 113;
constexpr std::size_t kInicio = 31 + kLectura;

INSTANTIATE_TEST_SUITE_P(
    Matriz, Fallos,
    testing::Combine(
        testing::Values(CasoFallo{"buscar", {"buscar"}, 0, 31, 1},
                        CasoFallo{"enLinea", {"en-linea", "--cuenta", "2"}, 31, 31 + 62, 1},
                        CasoFallo{"configuracion", {"configuracion"}, 31, kInicio, 1},
                        CasoFallo{"serie", {"serie", "02080050"}, kInicio, kInicio + 31 + 6 + kLectura, 1},
                        CasoFallo{"configurar",
                                  {"configurar", "--reloj-pc", "--borrar-memoria", "--sin-respaldo"},
                                  kInicio,
                                  kInicio + 31 + 108 + kLectura,
                                  1},
                        CasoFallo{
                            "descargar", {"descargar"}, kInicio, kInicio + 31 + 2 + kBytesMemoria, 70'001},
                        CasoFallo{"saludo", {"descargar"}, kInicio + 31, kInicio + 31 + 4, 1}),
        testing::Values(Dano::silencio, Dano::cambiado, Dano::sobrante, Dano::colgado, Dano::errorEscritura)),
    nombre);

}  // namespace
}  // namespace telvane
