// A server that goes away, refuses, or is not there.
#include "historico/biblioteca_postgres.h"
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

}  // namespace
}  // namespace telvane
