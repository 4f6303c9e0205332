// Standard streams that take nothing: every command ends, with the status that it would have otherwise unless
// its results are what was lost.
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <csignal>

#include "platform/descriptor.h"
#include "tests/cli/cli_prueba.h"

namespace telvane {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

// Descriptors that are open and take nothing.
class Tapados {
   public:
    Tapados() : lleno_(::open("/dev/full", O_WRONLY | O_CLOEXEC)) {
        std::signal(SIGPIPE, SIG_IGN);
        std::array<int, 2> tubo{};
        EXPECT_EQ(::pipe2(tubo.data(), O_CLOEXEC), 0);
        ::close(tubo[0]);
        roto_ = Descriptor(tubo[1]);
    }
    int lleno() const { return lleno_(); }
    int roto() const { return roto_(); }

   private:
    Descriptor lleno_;
    Descriptor roto_;
};

struct OrdenConFlujos {
    std::string nombre;
    std::vector<std::string> palabras;  // "@x" is a file in the test's folder
    std::string hecho = {};             // told where the results are lost: repeating it would do it twice
};

class FlujosCli : public CliPrueba, public testing::WithParamInterface<OrdenConFlujos> {
   protected:
    FlujosCli() : registrador(puertos.maquina(kPuerto)) {
        fs::create_directory(carpeta / "estaciones");
        std::ofstream(carpeta / "estaciones/norte.conf") << "COM=1=/dev/ttyUSB0\n";
        fs::create_directory(carpeta / "malas");
        std::ofstream(carpeta / "malas/sur.conf") << "COM=\n";
        std::ofstream(carpeta / "in.rgt", std::ios::binary) << comoTexto(registrador.imagen());
    }
    // Each run finds the same logger and no output of the one before.
    Resultado repetir() {
        puertos.conectar(kPuerto, registrador);
        bucle.avanzar(std::chrono::seconds(10));
        for (const auto* salida : {"out.rgt", "out.csv", "out.json"}) fs::remove(carpeta / salida);
        auto palabras = GetParam().palabras;
        for (auto& una : palabras) {
            if (una.starts_with('@')) una = (carpeta / una.substr(1)).string();
        }
        return correr(palabras);
    }

    MaquinaRegistrador registrador;
    Tapados tapados;
};

TEST_P(FlujosCli, TakingNothingTheyChangeNoStatusButThatOfLostResults) {
    const auto sana = repetir();
    const bool conResultados = sana.codigo == CodigoSalida::hecho && !sana.salida.empty();
    const auto sinSalida = conResultados ? CodigoSalida::fallo : sana.codigo;
    for (const int salida : {tapados.lleno(), tapados.roto(), -1}) {
        salidaAjena = salida;
        erroresAjenos.reset();
        // One that was closed may be told before anything else is.
        const auto codigos = testing::AnyOf(sinSalida, salida < 0 ? CodigoSalida::fallo : sinSalida);
        const auto r = repetir();
        EXPECT_THAT(r.codigo, codigos) << salida << r.errores;
        if (conResultados) {
            EXPECT_THAT(r.errores, HasSubstr("no se pudo escribir en la salida: ")) << salida;
            EXPECT_THAT(r.errores, HasSubstr(salida < 0 ? "" : GetParam().hecho)) << salida;
        }
        erroresAjenos = salida;
        EXPECT_THAT(repetir().codigo, codigos) << salida;
        salidaAjena.reset();
        const auto muda = repetir();
        EXPECT_EQ(muda.codigo, sana.codigo) << salida;
        // The clock in it has gone on.
        EXPECT_EQ(muda.salida.size(), sana.salida.size()) << salida;
    }
}

// "1<> a.rgt" keeps what the file holds, ">> a.rgt" adds to it: either would leave a memory that is none.
TEST_P(FlujosCli, LeadingToALoggersMemoryTheyTakeNotAByte) {
    const auto imagen = comoTexto(registrador.imagen());
    for (const std::size_t bytes : {kBytesMemoria, kBytesMemoria / 2}) {
        const auto memoria = imagen.substr(0, bytes);
        std::ofstream(carpeta / "otra", std::ios::binary) << memoria;
        for (const int modo : {O_RDWR, O_WRONLY | O_APPEND}) {
            const Descriptor ajeno(::open((carpeta / "otra").c_str(), modo | O_CLOEXEC));
            salidaAjena = ajeno();
            erroresAjenos.reset();
            auto r = repetir();
            EXPECT_EQ(r.codigo, CodigoSalida::malUso);
            EXPECT_EQ(r.errores,
                      "telvane-cli: no se pudo guardar la salida de la orden: ahí está lo que parece un "
                      "archivo base; quítelo de ahí, o dé otro nombre\n");
            salidaAjena.reset();
            erroresAjenos = ajeno();
            r = repetir();
            EXPECT_EQ(r.codigo, CodigoSalida::malUso);
            EXPECT_EQ(r.salida,
                      "telvane-cli: no se pudo guardar lo que la orden avisa: ahí está lo que parece un "
                      "archivo base; quítelo de ahí, o dé otro nombre\n");
            salidaAjena = ajeno();
            EXPECT_EQ(repetir().codigo, CodigoSalida::malUso);
            EXPECT_EQ(leerTodo(carpeta / "otra"), memoria);
            EXPECT_FALSE(fs::exists(carpeta / "out.rgt") || fs::exists(carpeta / "out.csv"));
        }
    }
}

// A night's log begins with its date, as a memory does with its number, and may hold what some program sent
// to a terminal.
TEST_P(FlujosCli, LeadingToALogTheyTakeWhatTheyAlwaysTook) {
    const auto sana = repetir();
    const std::string lineas = "2026-11-23 descarga\n\x1b[1mnorte\x1b[0m\n" + std::string(20, '\0') + "\n";
    for (const auto& diario :
         {lineas, std::string(6400, '\0') + lineas, std::string(64, '\0'), std::string()}) {
        std::ofstream(carpeta / "diario", std::ios::binary) << diario;
        const Descriptor ajeno(::open((carpeta / "diario").c_str(), O_WRONLY | O_APPEND | O_CLOEXEC));
        salidaAjena = erroresAjenos = ajeno();
        // What a command gives as a file shares none with what it tells.
        const bool daUnArchivo = GetParam().nombre.ends_with("ALaSalida");
        EXPECT_EQ(repetir().codigo, daUnArchivo ? CodigoSalida::malUso : sana.codigo);
        const auto largo = fs::file_size(carpeta / "diario");
        if (daUnArchivo) {
            EXPECT_THAT(leerTodo(carpeta / "diario"),
                        HasSubstr("van al mismo archivo: dé otro a los avisos"));
            erroresAjenos.reset();
            EXPECT_EQ(repetir().codigo, sana.codigo);
            EXPECT_EQ(fs::file_size(carpeta / "diario"), largo + sana.salida.size());
        } else {
            EXPECT_EQ(largo, diario.size() + sana.salida.size() + sana.errores.size());
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    CadaOrden, FlujosCli,
    testing::Values(
        OrdenConFlujos{"ayuda", {"--help"}}, OrdenConFlujos{"version", {"--version"}},
        OrdenConFlujos{"ayudaDeOrden", {"descargar", "--help"}}, OrdenConFlujos{"malUso", {"nada"}},
        OrdenConFlujos{"sinOrden", {}}, OrdenConFlujos{"puertos", {"puertos"}},
        OrdenConFlujos{"puertosJson", {"puertos", "--json"}}, OrdenConFlujos{"buscar", {"buscar"}},
        OrdenConFlujos{"configuracion", {"configuracion"}},
        OrdenConFlujos{"configuracionJson", {"configuracion", "--json"}},
        OrdenConFlujos{"enLinea", {"en-linea", "--cuenta", "2"}},
        OrdenConFlujos{"enLineaJson", {"en-linea", "--cuenta", "2", "--json"}},
        OrdenConFlujos{"descubrimiento", {"en-linea", "--descubrimiento"}},
        OrdenConFlujos{"serie", {"serie", "12345678"}, "el número quedó escrito"},
        OrdenConFlujos{"descargar",
                       {"descargar", "--base", "@out.rgt", "--csv", "@out.csv", "--ficha", "@out.json"}},
        OrdenConFlujos{"descargarALaSalida", {"descargar", "--base", "-"}},
        OrdenConFlujos{"csvALaSalida", {"descargar", "--base", "@out.rgt", "--csv", "-"}},
        OrdenConFlujos{"fichaALaSalida", {"descargar", "--base", "@out.rgt", "--ficha", "-"}},
        OrdenConFlujos{"convertir", {"convertir", "@in.rgt", "@out.csv"}},
        OrdenConFlujos{"convertirALaSalida", {"convertir", "@in.rgt", "-"}},
        OrdenConFlujos{"convertirNada", {"convertir", "@no.rgt", "@out.csv"}},
        OrdenConFlujos{"configurarSinPermiso", {"configurar", "--intervalo", "30"}},
        OrdenConFlujos{"configurar",
                       {"configurar", "--intervalo", "30", "--borrar-memoria", "--respaldo", "@out.rgt"},
                       "la configuración quedó escrita"},
        OrdenConFlujos{"estaciones", {"estaciones", "--en", "@estaciones"}},
        OrdenConFlujos{"estacionesMalas", {"estaciones", "--en", "@malas", "--json"}},
        OrdenConFlujos{"valores", {"estaciones", "--valores", "@estaciones/norte.conf"}}),
    [](const auto& caso) { return caso.param.nombre; });

}  // namespace
}  // namespace telvane
