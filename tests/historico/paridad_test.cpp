// What an archive prints follows from its images: in whatever order they came, in whichever store they are
// kept, made anew or copied from one to the other.
#include <algorithm>
#include <chrono>
#include <random>

#include <rapidcheck.h>

#include "historico/destino.h"
#include "loggerconfig/pasos_serie.h"
#include "tests/historico/banco_ordenes.h"
#include "tests/historico/imagenes_al_azar.h"

namespace telvane {
namespace {

constexpr auto kPaciencia = std::chrono::seconds(10);

// Whatever bytes a file may hold that is given as an image, of any length that one may have.
rc::Gen<std::vector<std::uint8_t>> bytesCualesquiera() {
    return rc::gen::exec([] {
        constexpr int kHastaElFin = static_cast<int>(kBytesMemoria) + 1;
        const auto largo = static_cast<std::size_t>(
            *rc::gen::oneOf(rc::gen::inRange(1, 500), rc::gen::inRange(1, kHastaElFin),
                            rc::gen::inRange(kHastaElFin - 40, kHastaElFin)));
        // Little of it new to the image before, all of it, or hardly anything at all.
        const auto cambios = *rc::gen::element<std::size_t>(0, 5, largo);
        std::mt19937 azar(*rc::gen::inRange(0, 1'000'000));
        auto bytes = ImagenPrueba().serie(0, 0, 4000, 1).bytes(largo);
        for (std::size_t i = 0; i < cambios; ++i) bytes[azar() % largo] = static_cast<std::uint8_t>(azar());
        return bytes;
    });
}

class CadaByte : public OrdenesEnAmbos {};
INSTANTIATE_TEST_SUITE_P(En, CadaByte, testing::Values(TipoAlmacen::sqlite, TipoAlmacen::postgresql),
                         nombreDeTipoAlmacen);

// All of them go into one archive, upon one another.
TEST_P(CadaByte, OfAnyImageOfAnyLengthComesBack) {
    paciencia = kPaciencia;
    std::map<std::string, std::string> dadas;
    const auto exigir = [&](const std::string& huella, const std::string& bytes) {
        const auto r = correr({"imagen", huella, "-"});
        RC_ASSERT(r.errores == "");
        RC_ASSERT(r.salida == bytes);
    };
    EXPECT_TRUE(rc::check([&] {
        const auto bytes = *bytesCualesquiera();
        const auto almacen = abrirAlmacen(archivo(), Uso::incorporar, kPaciencia, {});
        tomarSinRehusar(*almacen, bytes, {"prueba", ahora});
        const auto huella = textoDe(huellaDe(bytes));
        dadas[huella] = std::string(bytes.begin(), bytes.end());
        exigir(huella, dadas[huella]);
    }));
    for (const auto& [huella, bytes] : dadas) exigir(huella, bytes);
    EXPECT_EQ(correr({"comprobar"}).salida, "El archivo está entero.\n");
}

// An image of one of two stations, when it came, and from where: all of that follows from its bytes here, so
// that nothing but the order is different.
struct Dada {
    std::vector<std::uint8_t> bytes;
    Procedencia procedencia() const {
        const auto huella = huellaDe(bytes);
        Procedencia p{.origen = textoDe(huella).substr(0, 6) + ".rgt",
                      .incorporada = Incorporada(std::chrono::hours(490'000 + huella[0]))};
        if (huella[1] % 2 == 0) {
            p.descarga =
                FichaDescarga{.descargada = p.incorporada - std::chrono::minutes(huella[2]),
                              .puerto = 1 + huella[3] % 2,
                              .dispositivo = "/dev/ttyUSB0",
                              .desfase = huella[4] % 3 == 0 ? std::nullopt : std::optional(huella[5]),
                              .verificada = huella[6] % 2 == 0};
        }
        return p;
    }
};
void showValue(const Dada& dada, std::ostream& salida) {
    salida << dada.procedencia().origen << ", " << dada.bytes.size() << " bytes";
}
rc::Gen<Dada> dadaCualquiera() {
    return rc::gen::exec([] {
        auto bytes = *unaDeLaEstacion();
        const auto serie = empacarSerie(*rc::gen::element<std::string>("02080050", "02080050", "32080051"));
        std::copy(serie.begin(), serie.end(), bytes.begin());
        return Dada{std::move(bytes)};
    });
}

class Paridad : public Ordenes {
   protected:
    Paridad() { paciencia = kPaciencia; }

    static void incorporar(const std::string& en, const std::vector<Dada>& dadas) {
        const auto almacen = abrirAlmacen(en, Uso::incorporar, kPaciencia, {});
        for (const auto& dada : dadas) tomarSinRehusar(*almacen, dada.bytes, dada.procedencia());
    }
    std::string todoLoQueDice(const std::string& en) {
        std::string todo;
        const auto decir = [&](std::vector<std::string> orden) {
            orden.insert(orden.begin(), {"--en", en});
            const auto r = correr(orden);
            todo += orden[2] + ": " + std::to_string(r.codigo) + "\n" + r.salida + r.errores;
        };
        for (const auto* orden : {"estado", "imagenes"}) {
            decir({orden});
            decir({orden, "--json"});
        }
        std::vector<std::string> estaciones;
        {
            const auto almacen = abrirAlmacen(en, Uso::leer, kPaciencia, {});
            for (const auto& e : Lectura(*almacen).estaciones()) estaciones.push_back(e.nombre);
        }
        for (const auto& estacion : estaciones) {
            decir({"exportar", "-", "--estacion", estacion, "--formato", "csv", "--calidad"});
            decir({"exportar", "-", "--estacion", estacion, "--formato", "xls"});
            decir({"exportar", "-", "--estacion", estacion, "--formato", "jsonl", "--calidad", "--todo"});
        }
        decir({"comprobar"});
        return todo;
    }
    std::string enArchivo(const std::string& nombre) const {
        for (const auto* sufijo : {"", "-wal", "-shm"}) std::filesystem::remove(carpeta / (nombre + sufijo));
        return carpeta / nombre;
    }
    std::string enServidor() const {
        ServidorPostgres::unico().ejecutar(
            kBase, "SET client_min_messages=error; DROP SCHEMA IF EXISTS telvane CASCADE");
        return direccion_;
    }
    void hacer(std::vector<std::string> orden) {
        const auto r = correr(std::move(orden));
        RC_ASSERT(r.errores == "");
        RC_ASSERT(r.codigo == 0);
    }

   private:
    static constexpr const char* kBase = "paridad";
    std::string direccion_ = ServidorPostgres::unico().baseVacia(kBase);
};

TEST_F(Paridad, OfPostgresqlAndSqliteInWhateverOrderAndWhicheverWay) {
    // A server takes a second for each.
    auto cuantas = rc::detail::configuration().testParams;
    cuantas.maxSuccess = 12;
    const auto propiedad = [&] {
        const auto dadas = *rc::gen::container<std::vector<Dada>>(*rc::gen::inRange(1, 6), dadaCualquiera());
        auto enOtroOrden = dadas;
        std::shuffle(enOtroOrden.begin(), enOtroOrden.end(), std::mt19937(*rc::gen::inRange(0, 1000)));

        const auto archivo = enArchivo("uno.sqlite");
        incorporar(archivo, dadas);
        const auto dicho = todoLoQueDice(archivo);
        const auto servidor = enServidor();
        incorporar(servidor, enOtroOrden);
        RC_ASSERT(todoLoQueDice(servidor) == dicho);
        for (const auto& en : {archivo, servidor}) {
            hacer({"--en", en, "rehacer"});
            RC_ASSERT(todoLoQueDice(en) == dicho);
        }
        // There, and back into a new one.
        const auto deVuelta = enArchivo("otro.sqlite");
        hacer({"--en", servidor, "copiar", "--a", deVuelta});
        RC_ASSERT(todoLoQueDice(deVuelta) == dicho);
        hacer({"--en", deVuelta, "copiar", "--a", enServidor()});
        RC_ASSERT(todoLoQueDice(servidor) == dicho);
    };
    const auto resultado = rc::detail::checkTestable(propiedad, rc::detail::TestMetadata{}, cuantas);
    rc::detail::printResultMessage(resultado, std::cerr);
    EXPECT_TRUE(resultado.is<rc::detail::SuccessResult>());
}

}  // namespace
}  // namespace telvane
