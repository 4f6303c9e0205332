// Where a command's results go.
#include "consola/salida_consola.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <csignal>
#include <fstream>
#include <thread>

#include "tests/apoyo/leer_todo.h"
#include "tests/consola/consola_prueba.h"

namespace telvane {
namespace {

using namespace std::chrono_literals;

using testing::HasSubstr;
using testing::Pair;
using testing::ThrowsMessage;

class Salidas : public ConsolaPrueba {
   protected:
    void escribir(const std::string& nombre, std::string_view bytes, const ReglaDestino& regla = {}) {
        Consola consola(entorno);
        SalidaConsola(nombre, regla).escribir(entorno, consola, bytes);
    }
    std::string archivo() const { return carpeta / "a.csv"; }
    std::string tubo() const {
        const auto ruta = carpeta / "tubo";
        EXPECT_EQ(::mkfifo(ruta.c_str(), 0600), 0);
        return ruta;
    }
};

TEST_F(Salidas, TheOutputByItsOtherNamesIsTheOutput) {
    for (const auto* nombre : {"-", "/dev/stdout", "/dev/fd/1", "/proc/self/fd/1"}) {
        EXPECT_TRUE(esSalidaEstandar(nombre)) << nombre;
        escribir(nombre, "x");
    }
    EXPECT_EQ(salida.texto(), "xxxx");
    for (const auto* nombre : {"-", "/dev/stdin", "/dev/fd/0", "/proc/self/fd/0"})
        EXPECT_TRUE(esEntradaEstandar(nombre)) << nombre;
    for (const auto* nombre : {"", "./-", "/dev/fd/2", "a.csv"}) {
        EXPECT_FALSE(esSalidaEstandar(nombre)) << nombre;
        EXPECT_FALSE(esEntradaEstandar(nombre)) << nombre;
    }
}

TEST_F(Salidas, AFileIsThereWholeOrAsItWas) {
    escribir(archivo(), "antes");
    Consola consola(entorno);
    const SalidaConsola otra(archivo(), {});
    {
        EscrituraConsola escritura(otra, entorno, consola);
        escritura.escribir("nue");
    }
    EXPECT_EQ(leerTodo(archivo()), "antes");
    EscrituraConsola escritura(otra, entorno, consola);
    escritura.escribir("nue");
    EXPECT_EQ(leerTodo(archivo()), "antes");
    escritura.escribir("vo");
    escritura.terminar();
    EXPECT_EQ(leerTodo(archivo()), "nuevo");
}

TEST_F(Salidas, ANameOfAnotherKindOfFileIsToldAsSuch) {
    static constexpr auto kVedadas = std::to_array<std::string_view>({".rgt"});
    EXPECT_THAT([&] { escribir(carpeta / "a.RGT", "x", {.vedadas = kVedadas}); },
                ThrowsMessage<ErrorNombre>(HasSubstr("son de otra clase de archivo")));
    EXPECT_THROW(escribir(carpeta / "no/hay/a.csv", "x"), ErrorGuardado);
}

TEST_F(Salidas, AnOutputIsNoFileThatIsRead) {
    std::ofstream(archivo()) << "leido";
    ArchivosLeidos leidos;
    leidos.agregar(std::filesystem::path(archivo()));
    EXPECT_THAT([&] { escribir(archivo(), "x", {.leidos = leidos}); },
                ThrowsMessage<ErrorNombre>(HasSubstr("de ahí se lee")));
    // A shell put the same file there.
    const Descriptor agregado(::open(archivo().c_str(), O_WRONLY | O_APPEND | O_CLOEXEC));
    entorno.salida = agregado();
    EXPECT_THAT([&] { escribir("-", "x", {.leidos = leidos}); },
                ThrowsMessage<ErrorNombre>(HasSubstr("la salida de la orden")));
    EXPECT_EQ(leerTodo(archivo()), "leido");
}

TEST_F(Salidas, AFifoIsWrittenToAndStaysOne) {
    const auto ruta = tubo();
    std::string leido;
    std::jthread lector([&] { leido = leerTodo(ruta); });
    escribir(ruta, "por el tubo");
    lector.join();
    EXPECT_EQ(leido, "por el tubo");
    EXPECT_TRUE(std::filesystem::is_fifo(ruta));
}

TEST_F(Salidas, WhileNobodyReadsAFifoASignalEndsTheWait) {
    const auto ruta = tubo();
    const auto alarma = bucle.alarma(3s, [&] { entorno.senal = SIGINT; });
    EXPECT_THAT(final([&] { escribir(ruta, "x"); }), Pair(CodigoSalida::interrumpido, "interrumpido"));
    EXPECT_EQ(errores.texto(), ruta + ": se espera a quien lea esa tubería; Ctrl+C lo termina\n");
}

TEST_F(Salidas, AStreamThatTakesNoMoreIsToldWithItsName) {
    const auto lleno = carpeta / "lleno";
    if (::mknod(lleno.c_str(), S_IFCHR | 0666, makedev(1, 7)) != 0)
        GTEST_SKIP() << "making devices is not permitted here";
    EXPECT_THROW(escribir(lleno, "x"), ErrorGuardado);
}

}  // namespace
}  // namespace telvane
